#pragma once

#include "CoreTypes.h"

namespace ETimespan
{
	constexpr int64 TicksPerSecond = 10'000'000;
}

/** A moment in ticks of 100 ns since 0001-01-01 00:00. */
class FDateTime
{
public:
	FDateTime() = default;
	explicit FDateTime(int64 InTicks)
		: Ticks(InTicks)
	{
	}

	/** The local time. Thread: any. */
	static FDateTime Now();
	static FDateTime UtcNow();

	int64 GetTicks() const { return Ticks; }

private:
	int64 Ticks = 0;
};
