#pragma once

#include "CoreTypes.h"

#include <cstring>

struct FMemory
{
	/** The two must not overlap. */
	static void* Memcpy(void* Dest, const void* Src, SIZE_T Count) { return std::memcpy(Dest, Src, Count); }
	static void Memzero(void* Dest, SIZE_T Count) { std::memset(Dest, 0, Count); }
};
