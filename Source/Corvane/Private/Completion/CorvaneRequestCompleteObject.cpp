#include "CorvaneRequestCompleteObject.h"

#include "Async/Async.h"
#include "Completion/CancelState.h"
#include "Completion/CompletionResult.h"
#include "Completion/CorvThread.h"
#include "Completion/EventBody.h"
#include "Completion/GameThreadDelivery.h"
#include "Completion/ProgressMail.h"
#include "Completion/RunningRequests.h"
#include "Misc/CString.h"
#include "Misc/ScopeLock.h"
#include "Rules/ShownAddress.h"
#include "Templates/SharedPointer.h"
#include "UAsyncNodeCorv.h"
#include "UObject/WeakObjectPtr.h"

UCorvaneRequestCompleteObject::UCorvaneRequestCompleteObject(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
	, cancelState(MakeShared<FCorvCancelState>())
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
	libraryHandle = InLibrary;
}

void UCorvaneRequestCompleteObject::continueRequest(UCorvaneBPLibrary& InLibrary, TWeakObjectPtr<UAsyncNodeCorv> InNode)
{
	corvaneBPLibrary = &InLibrary;
	libraryHandle = &InLibrary;
	node = InNode;
	bIsLaterStep = true;
}

void UCorvaneRequestCompleteObject::setRequestStruct(FhttpRequest InRequest)
{
	httpRequest = MoveTemp(InRequest);
	httpRequest.setRequestCompleteObject(nullptr); // or this object would keep itself alive
}

bool UCorvaneRequestCompleteObject::initCorv()
{
	if (!getLibrary())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (12)."));
		return false;
	}
	if (corvThread && !corvThread->hasEnded() && !completionPosted)
	{
		return false;
	}
	freeWorker();
	resetRun();
	AddToRoot();
	runningLibrary = TStrongObjectPtr<UCorvaneBPLibrary>(corvaneBPLibrary);
	if (!bIsLaterStep)
	{
		node = corvaneBPLibrary->takeNode(requestID);
	}
	currentRun = corvaneBPLibrary->runningRequestList().begin(this, requestID, cancelState);
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
	lastProgressBytes = inheritedSpeed.bytes;
	lastProgressTime = inheritedSpeed.time;
	megabitSpeed = inheritedSpeed.megabit;
	serverSendEventLastByte = 0;
	uploadSent = 0;
	statusCode = 0;
	bodySize = -1;
	if (httpRequest.bindServerSendEvent)
	{
		eventBody = MakeShared<FCorvEventBody>();
	}
	progressMail = MakeShared<FCorvProgressMail>();
	cancelState = MakeShared<FCorvCancelState>();
	bTooMuchCame = false;
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

void UCorvaneRequestCompleteObject::requestStatusCode(FHttpRequestPtr, int32 InCode)
{
	statusCode = InCode;
	bodySize = 0;
}

void UCorvaneRequestCompleteObject::requestHeader(FHttpRequestPtr, const FString& InName, const FString& InValue)
{
	if (InName == TEXT("Content-Length"))
	{
		bodySize = FCString::Atoi64(*InValue);
	}
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

bool UCorvaneRequestCompleteObject::cancelIfAsked()
{
	if (!cancelState->isAsked(requestID))
	{
		return false;
	}
	corvaneBPLibrary->takeCancelMark(requestID);
	return true;
}

int32 UCorvaneRequestCompleteObject::codeOf(const FHttpResponsePtr& InResponse) const
{
	const int32 Code = InResponse.IsValid() ? InResponse->GetResponseCode() : 0;
	return Code != 0 ? Code : statusCode.load();
}

FCorvCompletion UCorvaneRequestCompleteObject::failureOf(const FHttpResponsePtr& InResponse)
{
	constexpr int32 firstErrorCode = 400;
	const int32 Code = codeOf(InResponse);
	TArray<uint8> EventBytes; // taken on every road: the record may be kept for long
	if (httpRequest.bindServerSendEvent)
	{
		EventBytes = eventBody->take();
	}
	if (cancelIfAsked())
	{
		return CorvaneResult::noResponse();
	}
	if (fileCancelResumeDownloadDir.IsEmpty() && !cancelState->programEnds) // downloads have a line of their own
	{
		UE_LOG(LogTemp, Warning, TEXT("UCorvaneBPLibrary: The request failed, the server's code is %d. Request %s, %s"), Code, *requestID,
			*CorvaneRules::shownAddress(httpRequest.url));
	}
	if (Code < firstErrorCode) // the answer of a broken exchange would pass for a success, so it counts as none
	{
		return CorvaneResult::noResponse();
	}
	const bool bOwnBody = httpRequest.bindServerSendEvent || !InResponse.IsValid();
	return CorvaneResult::refusal(Code, CorvaneResult::toText(bOwnBody ? EventBytes : InResponse->GetContent()));
}
