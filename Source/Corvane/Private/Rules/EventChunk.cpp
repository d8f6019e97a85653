#include "Rules/EventChunk.h"

#include "Containers/StringConv.h"

FCorvEventChunk CorvaneRules::nextEventChunk(int32 Delivered, uint64 BytesReceived, int32 ContentBytes)
{
	// Bodies end below 2^31 bytes, so the smaller of the two fits.
	const int32 End = static_cast<int32>(FMath::Min<uint64>(BytesReceived, static_cast<uint64>(ContentBytes)));
	const bool bBeganAnew = BytesReceived < static_cast<uint64>(Delivered);
	const int32 Begin = bBeganAnew ? 0 : Delivered;
	return {Begin, FMath::Max(Begin, End)};
}

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
