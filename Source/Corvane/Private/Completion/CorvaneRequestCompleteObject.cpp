#include "CorvaneRequestCompleteObject.h"

#include "Async/Async.h"
#include "Completion/CorvThread.h"
#include "Completion/GameThreadDelivery.h"
#include "Completion/RunningRequests.h"
#include "Misc/ScopeLock.h"
#include "Templates/SharedPointer.h"
#include "UObject/WeakObjectPtr.h"

UCorvaneRequestCompleteObject::UCorvaneRequestCompleteObject(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
{
}

void UCorvaneRequestCompleteObject::BeginDestroy()
{
	freeWorker();
	Super::BeginDestroy();
}

void UCorvaneRequestCompleteObject::setRequestID(FString InID, FhttpRequest InRequest, UCorvaneBPLibrary* InLibrary)
{
	setRequestStruct(MoveTemp(InRequest));
	requestID = MoveTemp(InID);
	corvaneBPLibrary = InLibrary;
}

void UCorvaneRequestCompleteObject::setRequestStruct(FhttpRequest InRequest)
{
	httpRequest = MoveTemp(InRequest);
	httpRequest.setRequestCompleteObject(nullptr); // or this object would keep itself alive
}

bool UCorvaneRequestCompleteObject::initCorv()
{
	if (corvThread && !corvThread->hasEnded() && !completionPosted)
	{
		return false;
	}
	freeWorker();
	resetRun();
	AddToRoot();
	currentRun = corvaneBPLibrary->runningRequestList().begin(this);
	FCorvThread* Worker = new FCorvThread(this, currentRun);
	FScopeLock Lock(&workerLock);
	corvThread = Worker;
	return true;
}

void UCorvaneRequestCompleteObject::stopJobs()
{
	FScopeLock Lock(&workerLock);
	if (corvThread)
	{
		corvThread->stopThread();
	}
}

void UCorvaneRequestCompleteObject::freeWorker()
{
	FCorvThread* Worker = corvThread;
	{
		FScopeLock Lock(&workerLock);
		corvThread = nullptr;
	}
	delete Worker; // outside the lock: it stops the thread and waits for its last steps
}

void UCorvaneRequestCompleteObject::resetRun()
{
	completionPosted = false;
	lastProgressBytes = 0;
	lastProgressTime = 0;
	megabitSpeed = 0;
	serverSendEventLastByte = 0;
	cancelDownloadContent.Empty();
	cancelDownloadResponse.Reset();
	cancelSeen = MakeShared<std::atomic<bool>>(false);
	bProbeGotBody = false;
}

void UCorvaneRequestCompleteObject::setHttpRequest(FHttpRequestPtr InRequest)
{
	corvaneBPLibrary->runningRequestList().setRequest(currentRun, InRequest);
}

void UCorvaneRequestCompleteObject::stopWorker()
{
	stopJobs();
	if (corvThread)
	{
		corvThread->waitForEnd();
	}
}

void UCorvaneRequestCompleteObject::workerEnded(int64 InRunNumber)
{
	AsyncTask(ENamedThreads::GameThread,
		[Object = TWeakObjectPtr<UCorvaneRequestCompleteObject>(this), InRunNumber]
		{
			UCorvaneRequestCompleteObject* Alive = Object.Get();
			if (Alive && Alive->currentRun == InRunNumber) // a later run has rooted the object for itself
			{
				Alive->RemoveFromRoot();
			}
		});
	corvaneBPLibrary->runningRequestList().end(InRunNumber);
}

void UCorvaneRequestCompleteObject::addJob(FCorvTheadJob* InJob)
{
	FScopeLock Lock(&workerLock);
	if (corvThread)
	{
		corvThread->addJob(InJob);
	}
	else
	{
		delete InJob;
	}
}

void UCorvaneRequestCompleteObject::requestComplete(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	addJob(new FCorvTheadJob{ECorvJobType::Complete, InRequest, InResponse, bInWasSuccessful});
}

void UCorvaneRequestCompleteObject::requestCompleteLowRam(FHttpRequestPtr InRequest, FHttpResponsePtr InResponse, bool bInWasSuccessful)
{
	addJob(new FCorvTheadJob{ECorvJobType::CompleteLowRam, InRequest, InResponse, bInWasSuccessful});
}

void UCorvaneRequestCompleteObject::requestMultiStepDownload(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::MultiStepDownload, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressUpload(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressUpload, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressDownload(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressDownload, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressServerSendEvent(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressServerSendEvent, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::requestProgressDownloadLowRam(FHttpRequestPtr InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addProgressJob(ECorvJobType::ProgressDownloadLowRam, InRequest, InBytesSent, InBytesReceived);
}

void UCorvaneRequestCompleteObject::addProgressJob(
	ECorvJobType InType, const FHttpRequestPtr& InRequest, uint64 InBytesSent, uint64 InBytesReceived)
{
	addJob(new FCorvTheadJob{InType, InRequest, nullptr, false, InBytesSent, InBytesReceived});
}

bool UCorvaneRequestCompleteObject::cancelIfAsked(const FHttpRequestPtr& InRequest)
{
	if (!corvaneBPLibrary->takeCancelMark(requestID))
	{
		return false;
	}
	*cancelSeen = true;
	CorvaneDelivery::cancel(InRequest);
	UE_LOG(LogTemp, Warning, TEXT("Request has been canceled. %s"), *requestID);
	return true;
}
