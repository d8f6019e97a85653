#pragma once

#include "CoreMinimal.h"
#include "Misc/DateTime.h"

/** Dates as HTTP writes them: always UTC, in English, to the second. Thread: any. */
namespace CorvaneHttpDate
{
	/**
	 * Reads "Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT" or "Sun Nov  6 08:49:37 1994". The name of the
	 * day is not looked at; years of two digits are those from 1970 to 2069.
	 * @return FDateTime::MinValue() for anything else, and for days that no calendar has.
	 */
	FDateTime Parse(const FString& Text);

	/** @param Moment  UTC. @return the first of the forms above. */
	FString ToText(const FDateTime& Moment);
} // namespace CorvaneHttpDate
