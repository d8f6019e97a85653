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
	AsyncTask(ENamedThreads::GameThread,
		[Node = TWeakObjectPtr<UAsyncNodeCorv>(InNode), InRequestID]
		{
			UAsyncNodeCorv* Alive = Node.Get();
			UCorvaneBPLibrary* Library = getCorvaneTarget();
			// It may have had its result meanwhile, from another request of the same ID.
			if (Alive && Library && Library->getUAsyncNodeHttpRequest(InRequestID) == Alive)
			{
				Alive->httpRequestComplete(FString(), {}, {}, 400, {}, InRequestID);
			}
			else
			{
				CorvaneBuilder::refuse(InRequestID);
			}
		});
}
