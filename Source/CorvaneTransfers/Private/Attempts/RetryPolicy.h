#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"

/** How often, and how soon, something may be tried again. Times are seconds. */
struct FCorvaneRetryLimits
{
	/** Tries in a row that may fail. */
	int32 Attempts = 1;
	double FirstWait = 0;
	double LongestWait = 0;
};

/** Whether something is tried again. */
struct FCorvaneRetryDecision
{
	bool bAgain = false;
	double WaitSeconds = 0;
	/** Why not, to follow the reason of the failure in a sentence; empty when that says enough. */
	FString WhyNot;
};

/** When something is tried again, and how long it is waited before. Times are seconds. Thread: any. */
namespace CorvaneRetry
{
	/** Whether a later try may end otherwise: 408, 425, 429 and the server's own troubles (5xx) but those that say "never". */
	bool IsPassing(int32 Code);

	/**
	 * A random share of a time that doubles with every failure, so that clients which lost the server together do not come
	 * back together.
	 * @param Failures  tries in a row that brought nothing; after none the wait is as after one.
	 * @param Random  from 0 up to, but without, 1.
	 */
	double Backoff(int32 Failures, double FirstWait, double LongestWait, double Random);

	/**
	 * @param Value  of a Retry-After header: seconds or a date.
	 * @param Now  UTC, by the server's own clock if that is known.
	 * @return seconds to wait, 0 for a moment that is over, at most a year; -1 when it is empty or cannot be read.
	 */
	double ParseRetryAfter(const FString& Value, const FDateTime& Now);

	/**
	 * @param Failures  tries in a row that failed, the last one among them.
	 * @param Asked  seconds that the server wants to be left alone; -1 = it did not say.
	 * @param Random  from 0 up to, but without, 1.
	 */
	FCorvaneRetryDecision Decide(const FCorvaneRetryLimits& Limits, int32 Failures, double Asked, double Random);
} // namespace CorvaneRetry
