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
	/** A file is not what it was: what was begun with it is of no use. */
	bool bChanged = false;

	bool IsOk() const { return Failure == ECorvaneTransferOutcome::Running; }
};
