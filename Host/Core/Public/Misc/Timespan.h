#pragma once

#include "CoreTypes.h"

namespace ETimespan
{
	constexpr int64 TicksPerSecond = 10'000'000;
}
