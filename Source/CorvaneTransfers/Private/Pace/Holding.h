#pragma once

#include "CoreMinimal.h"

/**
 * How a limit of bytes per second is kept. The HTTP module cannot pause a request, so a limited download asks for parts of half
 * a second's worth, or more where each has bytes to compare before it, and waits between them. A server that ignores ranges sends
 * all at once: its bytes are held up, but for 20 ms a block at most, because that holds up every other exchange too; a lower limit
 * is not kept with it.
 * Thread: any.
 */
namespace CorvanePace
{
	/** @return bytes of one part: half a second's worth, at least 64 KiB. */
	int64 PartBytes(int64 BytesPerSecond);
	/** @return seconds to wait after so many bytes in so many seconds; 0 without a limit. */
	double WaitAfter(int64 Bytes, double Seconds, int64 BytesPerSecond);
	/** The same for a thread that others wait for: at most 0.02. */
	double HoldAfter(int64 Bytes, double Seconds, int64 BytesPerSecond);
	/** @return what of a wait such a thread may be held up for. */
	double ShortOf(double Seconds);
} // namespace CorvanePace
