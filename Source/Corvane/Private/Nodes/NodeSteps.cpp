#include "Nodes/NodeSteps.h"

#include "Requests/RequestBuilder.h"
#include "Rules/StatusCodes.h"
#include "UAsyncNodeHttpRequest.h"
#include "UObject/UObjectGlobals.h"

FString CorvaneNode::takeID(UAsyncNodeCorv& Node, const FString& OptionalRequestID)
{
	const FString ID = CorvaneBuilder::idOrNew(OptionalRequestID);
	if (UCorvaneBPLibrary* Library = UCorvaneBPLibrary::getCorvaneTarget())
	{
		// One that was never activated has no result to come that would take its root. A root of the other classes is their owner's.
		UAsyncNodeHttpRequest* Replaced = Cast<UAsyncNodeHttpRequest>(Library->getUAsyncNodeHttpRequest(ID));
		if (Replaced && Replaced->waitState == ECorvNodeWait::Registered)
		{
			Replaced->RemoveFromRoot();
		}
		Library->registerUAsyncNodeHttpRequest(ID, &Node);
	}
	return ID;
}

void CorvaneNode::giveUpID(UAsyncNodeCorv& Node, const FString& RequestID)
{
	Node.waitState = ECorvNodeWait::NotWaiting;
	UCorvaneBPLibrary* Library = UCorvaneBPLibrary::getCorvaneTarget();
	if (!Library) // the end of the program
	{
		return;
	}
	const UAsyncNodeCorv* Receiver = Library->getUAsyncNodeHttpRequest(RequestID);
	if (!Receiver || Receiver == &Node) // a collected node is not found any more
	{
		Library->unregisterUAsyncNodeHttpRequest(RequestID);
	}
}

bool CorvaneNode::isSuccess(int32 StatusCode)
{
	return StatusCode < CorvaneStatus::firstError && StatusCode != 0;
}

void CorvaneNode::release(UAsyncNodeCorv& Node)
{
	Node.RemoveFromRoot(); // its class takes no root, but its owner may have
	Node.SetReadyToDestroy();
}
