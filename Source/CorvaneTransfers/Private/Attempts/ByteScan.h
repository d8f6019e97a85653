#pragma once

#include "CoreMinimal.h"

/** Looks for bytes eight at a time. Thread: any. */
namespace CorvaneByteScan
{
	/** @return where the first carriage return or line feed stands; End when there is none. */
	const uint8* FindLineEnd(const uint8* At, const uint8* End);
	/** @return where a byte stands first; End when it does not. */
	const uint8* Find(const uint8* At, const uint8* End, uint8 Wanted);
	/** @return where the first byte stands that is no ASCII; End when there is none. */
	const uint8* FindNonAscii(const uint8* At, const uint8* End);
} // namespace CorvaneByteScan
