#include "Completion/RunningRequests.h"

#include "CorvaneRequestCompleteObject.h"
#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "Misc/DateTime.h"
#include "Misc/ScopeLock.h"
#include "Misc/Timespan.h"

FCorvRunningRequests::FCorvRunningRequests()
	: runEnded(FPlatformProcess::GetSynchEventFromPool())
{
}

FCorvRunningRequests::~FCorvRunningRequests()
{
	FPlatformProcess::ReturnSynchEventToPool(runEnded);
}

int64 FCorvRunningRequests::begin(UCorvaneRequestCompleteObject* Object)
{
	FScopeLock Lock(&lock);
	runs.Add(++lastNumber, FRun{Object, nullptr});
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

void FCorvRunningRequests::cancelAll()
{
	TArray<FHttpRequestPtr> Requests;
	{
		FScopeLock Lock(&lock);
		for (const TPair<int64, FRun>& Run : runs)
		{
			Requests.Add(Run.Value.request);
		}
	}
	for (const FHttpRequestPtr& Request : Requests)
	{
		if (Request.IsValid())
		{
			Request->CancelRequest();
		}
	}
}

bool FCorvRunningRequests::waitUntilEmpty(double TimeoutSeconds)
{
	const int64 Deadline = FDateTime::UtcNow().GetTicks() + static_cast<int64>(TimeoutSeconds * ETimespan::TicksPerSecond);
	while (!isEmpty())
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
