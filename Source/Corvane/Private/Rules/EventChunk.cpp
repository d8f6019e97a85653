#include "Rules/EventChunk.h"

FString CorvaneRules::eventChunkText(const uint8* Bytes, int32 Number)
{
	int32 End = 0;
	while (End < Number && Bytes[End] != 0)
	{
		++End;
	}
	return FString::ConstructFromPtrSize(reinterpret_cast<const UTF8CHAR*>(Bytes), End);
}
