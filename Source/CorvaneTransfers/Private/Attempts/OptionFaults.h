#pragma once

#include "CoreMinimal.h"
#include "Templates/Function.h"

/** What the options of all kinds of transfers may hold. Each function gives a sentence, empty = nothing is wrong. Thread: any. */
namespace CorvaneOptionFaults
{
	/** @return whether it is a number of seconds that can be waited. */
	bool IsTime(double Seconds);

	FString OfAddress(const FString& URL);

	/**
	 * @param IsOwn  whether a transfer sets the header of a name itself.
	 * @param Whose  follows "This header ".
	 */
	FString OfHeaders(const TMap<FString, FString>& Headers, const TFunction<bool(const FString& Name)>& IsOwn, const TCHAR* Whose);

	/** Of tries that are limited, with waits between them. */
	FString OfTries(int32 Attempts, double FirstWaitSeconds, double LongestWaitSeconds, double SilenceSeconds);

	/** @return the first that is one. */
	FString First(const TArray<FString>& Faults);
} // namespace CorvaneOptionFaults
