#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneFollowOptions.h"

/** What a stream of events is asked for with. Thread: any. */
namespace CorvaneFollow
{
	/** @return what is wrong, as a sentence; empty = nothing. */
	FString FindFault(const FString& URL, const FCorvaneFollowOptions& Options);
	/** @return the same of headers alone, which may change before each try. */
	FString FindHeaderFault(const TMap<FString, FString>& Headers);

	/** @param LastEventID  is left out when it is empty, or of a kind that no header can carry. */
	FCorvaneExchangeRequest MakeRequest(
		const FString& URL, const FCorvaneFollowOptions& Options, const TMap<FString, FString>& Headers, const FString& LastEventID);
} // namespace CorvaneFollow
