#include "CorvaneRequestCompleteObject.h"

#include "Completion/GameThreadDelivery.h"
#include "Rules/EventChunk.h"

void UCorvaneRequestCompleteObject::requestProgressServerSendEventInternal(FHttpRequestPtr InRequest, uint64, uint64 InBytesReceived)
{
	const FHttpResponsePtr Response = InRequest.IsValid() ? InRequest->GetResponse() : nullptr;
	if (!corvaneBPLibrary || !Response.IsValid())
	{
		return;
	}
	// The reference is good until the next call on this thread, so the new bytes become text at once.
	const TArray<uint8>& Content = Response->GetContent();
	const FCorvEventChunk Chunk = CorvaneRules::nextEventChunk(serverSendEventLastByte, InBytesReceived, Content.Num());
	serverSendEventLastByte = Chunk.end;
	if (Chunk.begin < Chunk.end)
	{
		CorvaneDelivery::serverSendEvent(
			corvaneBPLibrary, CorvaneRules::eventChunkText(Content.GetData() + Chunk.begin, Chunk.end - Chunk.begin), requestID);
	}
}
