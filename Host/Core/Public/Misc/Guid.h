#pragma once

#include "Containers/UnrealString.h"

#include <array>

/** 128 random bits. */
class FGuid
{
public:
	/** Thread: any. */
	static FGuid NewGuid();
	/** 32 upper-case hexadecimal digits without separators. */
	FString ToString() const;

private:
	std::array<uint8, 16> Bytes{};
};
