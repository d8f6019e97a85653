#include "CorvaneBPLibrary.h"

#include "CorvaneRequestCompleteObject.h"
#include "Misc/ScopeLock.h"
#include "Runs/RunList.h"
#include "UAsyncNodeCorv.h"

UCorvaneRequestCompleteObject* FhttpRequest::requestCompleteObject() const
{
	return static_cast<UCorvaneRequestCompleteObject*>(completeObject.Get());
}

void FhttpRequest::setRequestCompleteObject(UCorvaneRequestCompleteObject* Object)
{
	completeObject = TStrongObjectPtr<UObject>(Object);
}

void UCorvaneBPLibrary::registerUAsyncNodeHttpRequest(FString InRequestID, UAsyncNodeCorv* InNode)
{
	if (InNode && InNode->waitState == ECorvNodeWait::NotWaiting)
	{
		InNode->waitState = ECorvNodeWait::Registered;
	}
	FScopeLock Lock(&mapLock);
	asyncNodes.Add(InRequestID, InNode);
}

void UCorvaneBPLibrary::unregisterUAsyncNodeHttpRequest(FString InRequestID)
{
	if (UAsyncNodeCorv* Node = getUAsyncNodeHttpRequest(InRequestID))
	{
		Node->waitState = ECorvNodeWait::NotWaiting;
	}
	FScopeLock Lock(&mapLock);
	asyncNodes.Remove(InRequestID);
}

UAsyncNodeCorv* UCorvaneBPLibrary::getUAsyncNodeHttpRequest(FString InRequestID)
{
	return nodeOf(InRequestID);
}

UAsyncNodeCorv* UCorvaneBPLibrary::nodeOf(const FString& InRequestID)
{
	FScopeLock Lock(&mapLock);
	return asyncNodes.FindRef(InRequestID).Get();
}

void UCorvaneBPLibrary::forgetDeadNode(const FString& InRequestID)
{
	FScopeLock Lock(&mapLock);
	const TWeakObjectPtr<UAsyncNodeCorv>* Node = asyncNodes.Find(InRequestID);
	if (Node && !Node->IsValid())
	{
		asyncNodes.Remove(InRequestID);
	}
}

TWeakObjectPtr<UAsyncNodeCorv> UCorvaneBPLibrary::takeNode(const FString& InRequestID)
{
	UAsyncNodeCorv* Node = nodeOf(InRequestID);
	if (Node)
	{
		Node->waitState = ECorvNodeWait::HasRequest;
	}
	return Node;
}

void UCorvaneBPLibrary::dropCancelMark(const FString& InRequestID)
{
	FScopeLock Lock(&mapLock);
	cancelledRequests.Remove(InRequestID);
}

void UCorvaneBPLibrary::releaseRunningRequest(const FString& InRequestID, const FHttpRequestPtr& InRequest)
{
	FScopeLock Lock(&mapLock);
	FHttpRequestPtr* Running = runningRequests.Find(InRequestID);
	if (Running && *Running == InRequest)
	{
		Running->Reset();
	}
}

void UCorvaneBPLibrary::cancelRequest(FString InRequestID)
{
	for (UCorvaneBPLibrary* Library : libraries())
	{
		{
			FScopeLock Lock(&Library->mapLock);
			Library->cancelledRequests.Add(InRequestID);
		}
		Library->runs->cancel(InRequestID);
	}
}
