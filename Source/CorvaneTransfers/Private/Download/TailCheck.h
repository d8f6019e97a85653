#pragma once

#include "CoreMinimal.h"

/** Compares the first bytes of a body with the last ones on disk, however the body is cut. Thread: one at a time. */
class FCorvaneTailCheck
{
public:
	/** @param InTail  the last bytes on disk. */
	explicit FCorvaneTailCheck(TArray<uint8>&& InTail);

	/** @return how many of the bytes belong to the tail; those behind them go into the file, unless it differs. */
	int64 Take(const uint8* Bytes, int64 Number);
	bool Differs() const { return bDiffers; }
	/** Whether all of the tail has come, and is the same. */
	bool IsPassed() const { return !bDiffers && Seen == Tail.Num(); }

private:
	const TArray<uint8> Tail;
	int32 Seen = 0;
	bool bDiffers = false;
};
