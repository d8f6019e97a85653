#pragma once

#include "CoreTypes.h"

struct FPlatformTime
{
	/** @return seconds from any beginning; it never goes back. Thread: any. */
	static double Seconds();
};
