#pragma once

#include "CoreTypes.h"

#include <cstring>

struct FMemory
{
	/** The two must not overlap. */
	static void* Memcpy(void* Dest, const void* Src, SIZE_T Count) { return std::memcpy(Dest, Src, Count); }
};
