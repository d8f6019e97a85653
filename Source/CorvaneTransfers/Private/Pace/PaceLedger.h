#pragma once

#include "CoreMinimal.h"

/**
 * What may move when under a limit of bytes per second, as a machine of values. A part is booked before its size is known, and
 * corrected when it is. Parts are a twentieth of a second's worth, so that no second has a tenth too many, unless whoever moves
 * them has to take larger ones. Now is in seconds from any beginning. Thread: one at a time.
 */
class FCorvanePaceLedger
{
public:
	/** @param BytesPerSecond  0 = no limit. */
	void SetLimit(double Now, int64 BytesPerSecond);

	/** @param SecondsOfLast  that the last part took. @return bytes of one part; 0 = no limit. */
	int64 PartBytes(double SecondsOfLast) const;

	/** @return seconds until the next part may move. */
	double SecondsUntilFree(double Now) const;
	/** A part of at most so many bytes moves from now on. @return bytes that it is counted as until more is known. */
	int64 Book(double Now, int64 MostBytes);
	/** More bytes moved than were booked; a negative number gives back. */
	void Correct(int64 Bytes);
	/** A part is over. @param Bytes  that it had. */
	void NotePart(int64 Bytes);

private:
	int64 Limit = 0;
	double FreeAt = 0;
	double UsualBytes = -1; // of the parts of late; -1 = there was none
};
