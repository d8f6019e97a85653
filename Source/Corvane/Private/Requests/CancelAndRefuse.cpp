#include "CorvaneBPLibrary.h"

#include "Misc/ScopeLock.h"
#include "Requests/Refusal.h"
#include "Runs/RunList.h"

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

void UCorvaneBPLibrary::fireErrorMessageInGameThread(UAsyncNodeCorv* InNode, int32, FString InRequestID)
{
	CorvaneRefusal::oneTaskLater(InNode, InRequestID);
}
