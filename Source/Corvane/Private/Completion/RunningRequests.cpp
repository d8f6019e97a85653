#include "Completion/RunningRequests.h"

#include "Completion/CancelState.h"
#include "CorvaneRequestCompleteObject.h"
#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "Misc/DateTime.h"
#include "Misc/ScopeLock.h"
#include "Misc/Timespan.h"

namespace CorvaneRunningRequests
{
	static void cancel(const TArray<FHttpRequestPtr>& Requests)
	{
		for (const FHttpRequestPtr& Request : Requests)
		{
			if (Request.IsValid())
			{
				Request->CancelRequest();
			}
		}
	}
} // namespace CorvaneRunningRequests

FCorvRunningRequests::FCorvRunningRequests()
	: runEnded(FPlatformProcess::GetSynchEventFromPool())
{
}

FCorvRunningRequests::~FCorvRunningRequests()
{
	FPlatformProcess::ReturnSynchEventToPool(runEnded);
}

int64 FCorvRunningRequests::begin(UCorvaneRequestCompleteObject* Object, const FString& RequestID, TSharedPtr<FCorvCancelState> CancelState)
{
	return add({RequestID, MoveTemp(CancelState), false, Object, nullptr});
}

int64 FCorvRunningRequests::beginFollowUp(const FString& RequestID, TSharedPtr<FCorvCancelState> CancelState)
{
	return add({RequestID, MoveTemp(CancelState), true, nullptr, nullptr});
}

int64 FCorvRunningRequests::add(FRun Run)
{
	FScopeLock Lock(&lock);
	runs.Add(++lastNumber, MoveTemp(Run));
	return lastNumber;
}

void FCorvRunningRequests::setRequest(int64 RunNumber, FHttpRequestPtr Request)
{
	FScopeLock Lock(&lock);
	if (FRun* Run = runs.Find(RunNumber))
	{
		Run->request = Request;
	}
}

FHttpRequestPtr FCorvRunningRequests::request(int64 RunNumber)
{
	FScopeLock Lock(&lock);
	const FRun* Run = runs.Find(RunNumber);
	return Run ? Run->request : nullptr;
}

void FCorvRunningRequests::end(int64 RunNumber)
{
	FScopeLock Lock(&lock);
	runs.Remove(RunNumber);
	runEnded->Trigger();
}

bool FCorvRunningRequests::isEmpty()
{
	FScopeLock Lock(&lock);
	return runs.IsEmpty();
}

bool FCorvRunningRequests::hasRuns()
{
	FScopeLock Lock(&lock);
	for (const TPair<int64, FRun>& Run : runs)
	{
		if (!Run.Value.bIsFollowUp)
		{
			return true;
		}
	}
	return false;
}

void FCorvRunningRequests::cancel(const FString& RequestID)
{
	TArray<FHttpRequestPtr> Requests;
	{
		FScopeLock Lock(&lock);
		for (const TPair<int64, FRun>& Run : runs)
		{
			if (Run.Value.requestID == RequestID)
			{
				Run.Value.cancelState->asked = true;
				Requests.Add(Run.Value.request);
			}
		}
	}
	CorvaneRunningRequests::cancel(Requests);
}

void FCorvRunningRequests::cancelAll()
{
	TArray<FHttpRequestPtr> Requests;
	{
		FScopeLock Lock(&lock);
		for (const TPair<int64, FRun>& Run : runs)
		{
			Run.Value.cancelState->programEnds = true;
			Requests.Add(Run.Value.request);
		}
	}
	CorvaneRunningRequests::cancel(Requests);
}

bool FCorvRunningRequests::waitUntilEmpty(double TimeoutSeconds)
{
	const int64 Deadline = FDateTime::UtcNow().GetTicks() + static_cast<int64>(TimeoutSeconds * ETimespan::TicksPerSecond);
	while (hasRuns())
	{
		const int64 TicksLeft = Deadline - FDateTime::UtcNow().GetTicks();
		if (TicksLeft <= 0)
		{
			return false;
		}
		runEnded->Wait(static_cast<uint32>(TicksLeft / (ETimespan::TicksPerSecond / 1000)) + 1);
	}
	return true;
}

TArray<UCorvaneRequestCompleteObject*> FCorvRunningRequests::remainingObjects()
{
	TArray<UCorvaneRequestCompleteObject*> Objects;
	FScopeLock Lock(&lock);
	for (const TPair<int64, FRun>& Run : runs)
	{
		if (UCorvaneRequestCompleteObject* Object = Run.Value.object.Get())
		{
			Objects.Add(Object);
		}
	}
	return Objects;
}
