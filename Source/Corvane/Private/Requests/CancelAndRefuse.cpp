#include "CorvaneBPLibrary.h"

#include "Async/Async.h"
#include "Completion/RunningRequests.h"
#include "Misc/ScopeLock.h"
#include "Requests/RequestBuilder.h"
#include "UAsyncNodeCorv.h"

void UCorvaneBPLibrary::cancelRequest(FString InRequestID)
{
	for (UCorvaneBPLibrary* Library : libraries())
	{
		{
			FScopeLock Lock(&Library->mapLock);
			Library->cancelledRequests.Add(InRequestID);
		}
		Library->runningList->cancel(InRequestID);
	}
}

void UCorvaneBPLibrary::fireErrorMessageInGameThread(UAsyncNodeCorv* InNode, int32, FString InRequestID)
{
	if (InNode)
	{
		InNode->waitState = ECorvNodeWait::HasRequest; // of which the refusal is the result: a later node of the ID leaves it alone
	}
	AsyncTask(ENamedThreads::GameThread,
		[Node = TWeakObjectPtr<UAsyncNodeCorv>(InNode), InRequestID]
		{
			UAsyncNodeCorv* Alive = Node.Get();
			// It may have had its result meanwhile, from another request of the same ID.
			if (Alive && Alive->waitState != ECorvNodeWait::NotWaiting)
			{
				Alive->httpRequestComplete(FString(), {}, {}, 400, {}, InRequestID);
			}
			else
			{
				CorvaneBuilder::refuse(InRequestID);
			}
		});
}
