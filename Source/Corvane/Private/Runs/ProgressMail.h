#pragma once

#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "Misc/ScopeLock.h"
#include "Templates/Function.h"

class UCorvaneBPLibrary;

/**
 * The latest progress of a run on its way to the game thread. While a task waits there, later progress takes the place of
 * what it was to tell: a game that stands still for a while does not find thousands of events. Thread: any.
 */
class FCorvProgressMail
{
public:
	using FBroadcast = TUniqueFunction<void(const UCorvaneBPLibrary&)>;

	/** @return whether a task has to be posted that will take it. */
	bool put(FBroadcast inLatest)
	{
		FScopeLock Lock(&lock);
		const bool bIsAwaited = static_cast<bool>(latest);
		latest = MoveTemp(inLatest);
		return !bIsAwaited;
	}

	FBroadcast take()
	{
		FScopeLock Lock(&lock);
		return MoveTemp(latest); // and nothing is left here
	}

private:
	FCriticalSection lock;
	FBroadcast latest CORVANE_GUARDED_BY(lock);
};
