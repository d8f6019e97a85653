#include "CorvaneBPLibrary.h"

#include "CorvaneRequestCompleteObject.h"
#include "Misc/ScopeLock.h"
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
	FScopeLock Lock(&mapLock);
	asyncNodes.Add(InRequestID, InNode);
}

void UCorvaneBPLibrary::unregisterUAsyncNodeHttpRequest(FString InRequestID)
{
	FScopeLock Lock(&mapLock);
	asyncNodes.Remove(InRequestID);
}

UAsyncNodeCorv* UCorvaneBPLibrary::getUAsyncNodeHttpRequest(FString InRequestID)
{
	return findNode(InRequestID).Get();
}

TWeakObjectPtr<UAsyncNodeCorv> UCorvaneBPLibrary::findNode(const FString& InRequestID)
{
	FScopeLock Lock(&mapLock);
	return asyncNodes.FindRef(InRequestID);
}

bool UCorvaneBPLibrary::takeCancelMark(const FString& InRequestID)
{
	FScopeLock Lock(&mapLock);
	return cancelledRequests.Remove(InRequestID) > 0;
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
