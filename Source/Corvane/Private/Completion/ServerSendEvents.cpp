#include "Completion/EventBody.h"
#include "Completion/GameThreadDelivery.h"
#include "CorvaneRequestCompleteObject.h"
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

FString FCorvEventBody::textFrom(int32 Begin, int32& OutEnd)
{
	FScopeLock Lock(&lock);
	OutEnd = body.Num();
	return CorvaneRules::eventChunkText(body.GetData() + Begin, OutEnd - Begin);
}

TArray<uint8> FCorvEventBody::take()
{
	FScopeLock Lock(&lock);
	return MoveTemp(body);
}

void UCorvaneRequestCompleteObject::takeEventBytes(void* InBytes, int64& InOutNumber)
{
	if (!eventBody->append(InBytes, InOutNumber))
	{
		InOutNumber = 0; // ends the transfer
		return;
	}
	requestProgressServerSendEvent(nullptr, 0, static_cast<uint64>(eventBody->size()));
}

void UCorvaneRequestCompleteObject::requestProgressServerSendEventInternal(FHttpRequestPtr, uint64, uint64)
{
	int32 End = 0;
	FString Text = eventBody->textFrom(serverSendEventLastByte, End);
	if (corvaneBPLibrary && serverSendEventLastByte < End)
	{
		serverSendEventLastByte = End;
		CorvaneDelivery::serverSendEvent(corvaneBPLibrary, MoveTemp(Text), requestID);
	}
}
