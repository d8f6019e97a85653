#pragma once

#include "CoreMinimal.h"

/** The speed of a download, as it was measured last. */
struct FCorvSpeed
{
	int64 bytes = 0; // of the whole file, at the last measurement
	int64 time = 0; // of it, in ticks of 100 ns; 0 = never measured
	float megabit = 0; // 2^20 bits each

	/**
	 * Measures once a second: the amount since the last measurement, which is not divided by the time, a second or a little
	 * more.
	 * @param now  in ticks of 100 ns. @param received  bytes of the whole file.
	 */
	void measure(int64 now, int64 received);
};
