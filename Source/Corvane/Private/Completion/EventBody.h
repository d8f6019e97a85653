#pragma once

#include "CoreMinimal.h"
#include "HAL/CriticalSection.h"

/**
 * The body of an answer with server-sent events. It is collected here, because the HTTP layer's own array grows and moves
 * while it is read. Thread: any.
 */
class FCorvEventBody
{
public:
	/** @return false, and nothing is taken, when the body would be longer than an array can be. */
	bool append(const void* bytes, int64 number);
	/** Bytes so far. */
	int32 size();
	/** The bytes from a position on, read as text. @param end  where they end. */
	FString textFrom(int32 begin, int32& end);
	/** The whole body, which is gone from here then. */
	TArray<uint8> take();

private:
	FCriticalSection lock;
	TArray<uint8> body;
};
