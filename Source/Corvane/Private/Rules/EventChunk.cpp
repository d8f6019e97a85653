#include "Rules/EventChunk.h"

#include "Containers/StringConv.h"

FString CorvaneRules::eventChunkText(const uint8* Bytes, int32 Number)
{
	int32 End = 0;
	while (End < Number && Bytes[End] != 0)
	{
		++End;
	}
	const FUTF8ToTCHAR Units(reinterpret_cast<const ANSICHAR*>(Bytes), End);
	return FString::ConstructFromPtrSize(Units.Get(), Units.Length());
}
