#include "Runs/EventBody.h"

#include "Misc/ScopeLock.h"
#include "Rules/EventChunk.h"

bool FCorvEventBody::append(const void* Bytes, int64 Number)
{
	FScopeLock Lock(&lock);
	const bool bFits = Number <= MAX_int32 - body.Num();
	if (bFits)
	{
		body.Append(static_cast<const uint8*>(Bytes), static_cast<int32>(Number));
	}
	return bFits;
}

int32 FCorvEventBody::size()
{
	FScopeLock Lock(&lock);
	return body.Num();
}

bool FCorvEventBody::nextChunk(FString& OutText)
{
	FScopeLock Lock(&lock);
	const int32 Begin = serverSendEventLastByte;
	if (body.Num() <= Begin)
	{
		return false;
	}
	serverSendEventLastByte = body.Num();
	OutText = CorvaneRules::eventChunkText(body.GetData() + Begin, body.Num() - Begin);
	return true;
}

TArray<uint8> FCorvEventBody::take()
{
	FScopeLock Lock(&lock);
	return MoveTemp(body);
}
