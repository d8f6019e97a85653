#pragma once

#include "CoreMinimal.h"

/** Text out of bytes that a server sent. Thread: any. */
namespace CorvaneUtf8
{
	/**
	 * Reads UTF-8. What is none becomes U+FFFD, one for each longest beginning of a character that is not gone on with, and
	 * one for each byte that begins none.
	 */
	FString Decode(const uint8* Bytes, int64 Number);
} // namespace CorvaneUtf8
