#pragma once

#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "Interfaces/IHttpRequest.h"
#include "Threads/PooledEvent.h"
#include "UObject/WeakObjectPtr.h"

class UCorvaneRequestCompleteObject;
struct FCorvCancelState;

/**
 * Every run of a request from its start until its worker has ended, also those that the map by request ID does not hold,
 * and what is to follow an ended one. It answers whether the program may end, and ends what runs when it must.
 * Thread: any, unless a function says otherwise.
 */
class FCorvRunList
{
public:
	/** @return the number of the new run, never 0 and never used again. */
	int64 begin(UCorvaneRequestCompleteObject* object, const FString& requestID, TSharedPtr<FCorvCancelState> cancelState);
	/** The same for a request that is to follow an ended one and has not been started yet. */
	int64 beginFollowUp(const FString& requestID, TSharedPtr<FCorvCancelState> cancelState);
	/** Names the engine request of a run, so that the run can be cancelled. */
	void setRequest(int64 runNumber, FHttpRequestPtr request);
	/** @return the engine request of a run; null when it has none, or has ended. */
	FHttpRequestPtr request(int64 runNumber);
	/** The worker of a run has done its last job, or a follow-up was started or given up. */
	void end(int64 runNumber);

	bool isEmpty();
	/** Whether a worker is still to end; what is only to follow does not count. */
	bool hasRuns();
	/** Cancels whatever runs, or is to follow, under an ID. */
	void cancel(const FString& requestID);
	/** Cancels the engine request of every run. */
	void cancelAll();
	/** @return false when the time was over before every run had ended; follow-ups do not count. Thread: game thread, one at a time. */
	bool waitUntilEmpty(double timeoutSeconds);
	/** The completion objects of the runs that have not ended. Thread: game thread. */
	TArray<UCorvaneRequestCompleteObject*> remainingObjects();

private:
	struct FRun
	{
		FString requestID;
		TSharedPtr<FCorvCancelState> cancelState;
		bool bIsFollowUp = false;
		TWeakObjectPtr<UCorvaneRequestCompleteObject> object;
		FHttpRequestPtr request;
	};

	int64 add(FRun run);

	FCriticalSection lock;
	TMap<int64, FRun> runs CORVANE_GUARDED_BY(lock);
	int64 lastNumber CORVANE_GUARDED_BY(lock) = 0;
	FCorvPooledEvent runEnded;
};
