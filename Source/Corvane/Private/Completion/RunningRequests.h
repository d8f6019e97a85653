#pragma once

#include "CoreMinimal.h"
#include "HAL/CriticalSection.h"
#include "Interfaces/IHttpRequest.h"
#include "UObject/WeakObjectPtr.h"

#include <atomic>

class FEvent;
class UCorvaneRequestCompleteObject;

/**
 * Every run of a request from its start until its worker has ended, also those that the map by request ID does not hold.
 * It answers whether the program may end, and ends what runs when it must. Thread: any, unless a function says otherwise.
 */
class FCorvRunningRequests
{
public:
	FCorvRunningRequests();
	~FCorvRunningRequests();

	/** @return the number of the new run, never 0 and never used again. Thread: game thread. */
	int64 begin(UCorvaneRequestCompleteObject* object);
	/** Names the engine request of a run, so that the run can be cancelled. */
	void setRequest(int64 runNumber, FHttpRequestPtr request);
	/** The worker of a run has done its last job. */
	void end(int64 runNumber);

	bool isEmpty();
	/** Counts the requests that are to follow ended ones and have not been started yet. */
	void beginFollowUp() { ++followUps; }
	void endFollowUp() { --followUps; }
	bool hasFollowUps() const { return followUps > 0; }
	/** Cancels the engine request of every run. */
	void cancelAll();
	/** @return false when the time was over before every run had ended. Thread: game thread, one at a time. */
	bool waitUntilEmpty(double timeoutSeconds);
	/** The completion objects of the runs that have not ended. Thread: game thread. */
	TArray<UCorvaneRequestCompleteObject*> remainingObjects();

private:
	struct FRun
	{
		TWeakObjectPtr<UCorvaneRequestCompleteObject> object;
		FHttpRequestPtr request;
	};

	FCriticalSection lock;
	TMap<int64, FRun> runs;
	int64 lastNumber = 0;
	std::atomic<int32> followUps{0};
	FEvent* runEnded; // from the engine's pool
};
