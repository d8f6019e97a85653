#pragma once

#include "CoreMinimal.h"
#include "CorvaneTransfers.h"

/** What came of a step with files. */
struct FCorvaneFileResult
{
	/** Running when nothing went wrong, else how the transfer has to end. */
	ECorvaneTransferOutcome Failure = ECorvaneTransferOutcome::Running;
	/** Says to people what went wrong; empty when nothing did. */
	FString Sentence;

	bool IsOk() const { return Failure == ECorvaneTransferOutcome::Running; }
};
