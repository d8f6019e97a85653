#pragma once

#include "CoreMinimal.h"

#include <atomic>

/** Whether a script has asked to cancel a request; shared by all steps of one that takes several. Thread: any. */
struct FCorvCancelState
{
	std::atomic<bool> asked{false};
	std::atomic<bool> logged{false};
	std::atomic<bool> programEnds{false}; // and cancels everything: no failure of the request's own

	/** Tells the log, once. @return whether the script has asked. */
	bool isAsked(const FString& requestID)
	{
		if (asked && !logged.exchange(true))
		{
			UE_LOG(LogTemp, Warning, TEXT("Request has been canceled. %s"), *requestID);
		}
		return asked;
	}
};
