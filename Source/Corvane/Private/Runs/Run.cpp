#include "Runs/Run.h"

#include "Async/Async.h"
#include "CorvaneRequestCompleteObject.h"
#include "Misc/CString.h"
#include "Misc/ScopeLock.h"
#include "Rules/ShownAddress.h"
#include "Rules/StatusCodes.h"
#include "Runs/CancelState.h"
#include "Runs/CorvThread.h"
#include "Runs/FollowUp.h"
#include "Runs/Result.h"
#include "Runs/RunList.h"

FCorvRun::FCorvRun(UCorvaneRequestCompleteObject& InOwner)
	: owner(InOwner)
	, cancelState(MakeShared<FCorvCancelState>())
{
}

FCorvRun::~FCorvRun() = default;

void FCorvRun::setLibrary(UCorvaneBPLibrary* InLibrary)
{
	corvaneBPLibrary = InLibrary;
	libraryHandle = InLibrary;
}

void FCorvRun::continueFor(UCorvaneBPLibrary& InLibrary, TWeakObjectPtr<UAsyncNodeCorv> InNode)
{
	setLibrary(&InLibrary);
	node = InNode;
	bIsLaterStep = true;
}

bool FCorvRun::begin()
{
	if (!getLibrary())
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary: Missing Object instance (12)."));
		return false;
	}
	if (isBusy())
	{
		return false;
	}
	freeWorker();
	reset();
	owner.AddToRoot();
	runningLibrary = TStrongObjectPtr<UCorvaneBPLibrary>(corvaneBPLibrary);
	if (!bIsLaterStep)
	{
		node = corvaneBPLibrary->takeNode(requestID);
	}
	currentRun = corvaneBPLibrary->runList().begin(&owner, requestID, cancelState);
	TUniquePtr<FCorvThread> Worker = MakeUnique<FCorvThread>(&owner, currentRun);
	FScopeLock Lock(&workerLock);
	corvThread = MoveTemp(Worker);
	return true;
}

bool FCorvRun::isBusy()
{
	FScopeLock Lock(&workerLock);
	return corvThread && !corvThread->hasEnded() && !completionPosted;
}

void FCorvRun::reset()
{
	completionPosted = false;
	statusCode = 0;
	announcedSize = -1;
	events.Reset();
	progressMail = MakeShared<FCorvProgressMail>();
	cancelState = MakeShared<FCorvCancelState>();
}

void FCorvRun::collectEvents()
{
	events = MakeShared<FCorvEventBody>();
}

void FCorvRun::setRequest(FHttpRequestPtr InRequest)
{
	corvaneBPLibrary->runList().setRequest(currentRun, InRequest);
}

FHttpRequestPtr FCorvRun::request() const
{
	return corvaneBPLibrary->runList().request(currentRun);
}

void FCorvRun::stopJobs()
{
	FScopeLock Lock(&workerLock);
	if (corvThread)
	{
		corvThread->stopThread();
	}
}

void FCorvRun::stopWorker()
{
	stopJobs();
	FCorvThread* Worker = nullptr;
	{
		FScopeLock Lock(&workerLock);
		Worker = corvThread.Get();
	}
	if (Worker) // no other thread frees it
	{
		Worker->waitForEnd();
	}
}

void FCorvRun::freeWorker()
{
	TUniquePtr<FCorvThread> Worker; // freed outside the lock: it stops its thread and waits for its last steps
	FScopeLock Lock(&workerLock);
	Worker = MoveTemp(corvThread);
}

void FCorvRun::addJob(TUniquePtr<FCorvTheadJob> InJob)
{
	FScopeLock Lock(&workerLock);
	if (corvThread)
	{
		corvThread->addJob(MoveTemp(InJob));
	}
}

void FCorvRun::setStatusCode(int32 InCode)
{
	statusCode = InCode;
	announcedSize = 0;
}

void FCorvRun::setHeader(const FString& InName, const FString& InValue)
{
	if (InName == TEXT("Content-Length"))
	{
		announcedSize = FCString::Atoi64(*InValue);
	}
}

bool FCorvRun::cancelIfAsked()
{
	if (!cancelState->isAsked(requestID))
	{
		return false;
	}
	corvaneBPLibrary->dropCancelMark(requestID);
	return true;
}

int32 FCorvRun::codeOf(const FHttpResponsePtr& InResponse) const
{
	const int32 Code = InResponse.IsValid() ? InResponse->GetResponseCode() : 0;
	return Code != 0 ? Code : statusCode.load();
}

void FCorvRun::tellFailure(int32 InCode)
{
	if (!cancelIfAsked() && !cancelState->programEnds)
	{
		UE_LOG(LogTemp, Warning, TEXT("UCorvaneBPLibrary: The request failed, the server's code is %d. Request %s, %s"), InCode, *requestID,
			*CorvaneRules::shownAddress(httpRequest.url));
	}
}

FCorvCompletion FCorvRun::failureOf(const FHttpResponsePtr& InResponse)
{
	TArray<uint8> EventBytes; // taken on every road: the record may be kept for long
	if (events.IsValid())
	{
		EventBytes = events->take();
	}
	const int32 Code = codeOf(InResponse);
	if (cancelIfAsked() || Code < CorvaneStatus::firstError) // the answer of a broken exchange would pass for a success
	{
		return CorvaneResult::noResponse();
	}
	const bool bOwnBody = events.IsValid() || !InResponse.IsValid();
	return CorvaneResult::refusal(Code, CorvaneResult::toText(bOwnBody ? EventBytes : InResponse->GetContent()));
}

FCorvCompletion FCorvRun::resultOf(const FHttpResponsePtr& InResponse, bool bInWasSuccessful)
{
	if (!bInWasSuccessful || !InResponse.IsValid())
	{
		tellFailure(codeOf(InResponse));
		return failureOf(InResponse);
	}
	return CorvaneResult::success(*InResponse, events.IsValid() ? events->take() : InResponse->GetContent());
}

void FCorvRun::report(FCorvProgressMail::FBroadcast InBroadcast)
{
	CorvaneDelivery::progress(corvaneBPLibrary, progressMail, MoveTemp(InBroadcast));
}

void FCorvRun::beginEnd(const FHttpRequestPtr& InRequest)
{
	corvaneBPLibrary->releaseRunningRequest(requestID, InRequest); // here, so that the game thread need not free it
	completionPosted = true;
}

void FCorvRun::deliver(const FHttpRequestPtr& InRequest, FCorvCompletion InResult)
{
	InResult.requestID = requestID;
	beginEnd(InRequest);
	CorvaneDelivery::completion(corvaneBPLibrary, node, MoveTemp(InResult));
}

void FCorvRun::deliver(const FHttpRequestPtr& InRequest, FCorvFileInfoResult InResult)
{
	InResult.requestID = requestID;
	beginEnd(InRequest);
	CorvaneDelivery::fileInfo(corvaneBPLibrary, node, MoveTemp(InResult));
}

void FCorvRun::follow(TUniqueFunction<TArray<FhttpRequest>()> InBuild, TUniqueFunction<void(UCorvaneBPLibrary&)> InAbandon)
{
	completionPosted = true;
	CorvaneFollowUp::start(
		corvaneBPLibrary, FCorvFollowUp{requestID, httpRequest, cancelState, node, MoveTemp(InBuild), MoveTemp(InAbandon)});
}

void FCorvRun::end(int64 InRunNumber)
{
	AsyncTask(ENamedThreads::GameThread,
		[Object = TWeakObjectPtr<UCorvaneRequestCompleteObject>(&owner), InRunNumber]
		{
			UCorvaneRequestCompleteObject* Alive = Object.Get();
			if (Alive && Alive->run().number() == InRunNumber) // a later run has rooted the object for itself
			{
				Alive->RemoveFromRoot();
			}
		});
	corvaneBPLibrary->runList().end(InRunNumber);
}
