#include "Runs/RunList.h"

#include "CorvaneRequestCompleteObject.h"
#include "Misc/DateTime.h"
#include "Misc/ScopeLock.h"
#include "Misc/Timespan.h"
#include "Runs/CancelState.h"

namespace CorvaneRunList
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
} // namespace CorvaneRunList

int64 FCorvRunList::begin(UCorvaneRequestCompleteObject* Object, const FString& RequestID, TSharedPtr<FCorvCancelState> CancelState)
{
	return add({RequestID, MoveTemp(CancelState), false, Object, nullptr});
}

int64 FCorvRunList::beginFollowUp(const FString& RequestID, TSharedPtr<FCorvCancelState> CancelState)
{
	return add({RequestID, MoveTemp(CancelState), true, nullptr, nullptr});
}

int64 FCorvRunList::add(FRun Run)
{
	FScopeLock Lock(&lock);
	runs.Add(++lastNumber, MoveTemp(Run));
	return lastNumber;
}

void FCorvRunList::setRequest(int64 RunNumber, FHttpRequestPtr Request)
{
	FScopeLock Lock(&lock);
	if (FRun* Run = runs.Find(RunNumber))
	{
		Run->request = Request;
	}
}

FHttpRequestPtr FCorvRunList::request(int64 RunNumber)
{
	FScopeLock Lock(&lock);
	const FRun* Run = runs.Find(RunNumber);
	return Run ? Run->request : nullptr;
}

void FCorvRunList::end(int64 RunNumber)
{
	FRun Ended; // freed outside the lock: it may be the last to hold its request
	FScopeLock Lock(&lock);
	if (FRun* Run = runs.Find(RunNumber))
	{
		Ended = MoveTemp(*Run);
		runs.Remove(RunNumber);
	}
	runEnded->Trigger();
}

bool FCorvRunList::isEmpty()
{
	FScopeLock Lock(&lock);
	return runs.IsEmpty();
}

bool FCorvRunList::hasRuns()
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

void FCorvRunList::cancel(const FString& RequestID)
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
	CorvaneRunList::cancel(Requests);
}

void FCorvRunList::cancelAll()
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
	CorvaneRunList::cancel(Requests);
}

bool FCorvRunList::waitUntilEmpty(double TimeoutSeconds)
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

TArray<UCorvaneRequestCompleteObject*> FCorvRunList::remainingObjects()
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
