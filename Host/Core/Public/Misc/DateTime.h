#pragma once

#include "Containers/UnrealString.h"
#include "Misc/Timespan.h"

#include <compare>

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
	/** The start of the first year, which also stands for "no time". */
	static FDateTime MinValue() { return FDateTime(); }
	/** The last tick of the year 9999. */
	static FDateTime MaxValue();
	/** @param Seconds  since 1970-01-01 00:00. */
	static FDateTime FromUnixTimestamp(int64 Seconds);

	int64 GetTicks() const { return Ticks; }
	auto operator<=>(const FDateTime& Other) const = default;

	/** @return "YYYY-MM-DDThh:mm:ss.mmmZ"; what is below a millisecond is cut off. */
	FString ToIso8601() const;
	/** Reads such a text, with every digit in its place. @return false when it is not one, or no date of the calendar. */
	static bool ParseIso8601(const TCHAR* Text, FDateTime& OutDateTime);

private:
	int64 Ticks = 0;
};
