#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneTransfers.h"
#include "Misc/DateTime.h"

/** What the end of an exchange that failed means to a transfer. Thread: any. */
namespace CorvaneTryEnd
{
	ECorvaneTransferOutcome OutcomeOf(ECorvaneExchangeEnd End);
	/** @return for people, the part of a sentence. */
	FString ReasonOf(ECorvaneExchangeEnd End);
	/**
	 * @param NowUtc  is not needed when the server has told its own time.
	 * @return seconds that the server asks to wait; -1 = it does not.
	 */
	double WaitAskedFor(const FCorvaneAnswer& Answer, const FDateTime& NowUtc);
} // namespace CorvaneTryEnd
