#pragma once

#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"

/**
 * The body of an answer with server-sent events, collected while it comes in. Thread: any.
 */
class FCorvEventBody
{
public:
	/** @return false, and nothing is taken, when the body would be longer than an array can be. */
	bool append(const void* bytes, int64 number);
	/** Bytes so far. */
	int32 size();
	/** Gives what has come since the last call, read as text. @return false when nothing has. */
	bool nextChunk(FString& text);
	/** The whole body, which is gone from here then. */
	TArray<uint8> take();

private:
	FCriticalSection lock;
	TArray<uint8> body CORVANE_GUARDED_BY(lock);
	int32 serverSendEventLastByte CORVANE_GUARDED_BY(lock) = 0; // the end of the last chunk
};
