#pragma once

#include "CoreMinimal.h"
#include "HAL/CriticalSection.h"
#include "Threads/PooledWait.h"

/**
 * Bytes on their way from one thread to another, in bounded memory: whoever brings too many waits until some are taken. One
 * thread brings, one takes; both may be any.
 */
class FCorvaneByteBuffer
{
public:
	/** Bytes that may wait to be taken. */
	static constexpr int32 Limit = 1024 * 1024;

	/**
	 * Waits for room, and then takes all bytes, however many.
	 * @param bFirst  whether nothing was waiting to be taken before.
	 * @param Patience  milliseconds to wait for a sign of whoever takes (Take or KeepWaiting), each time anew.
	 * @return false when nobody takes any more.
	 */
	bool Put(const uint8* Bytes, int64 Number, bool& bFirst, uint32 Patience = MAX_uint32);

	/** Exchanges what is waiting for an emptied array. @return false when nothing is. */
	bool Take(TArray<uint8>& Bytes);

	/** Tells that what was taken is still being worked on, and more will be taken. */
	void KeepWaiting() { Taken->Trigger(); }

	/** Nobody takes any more: wakes whoever waits. What is waiting is lost. */
	void Close();
	/** The opposite, while nobody takes. */
	void Reopen();

private:
	FCriticalSection Guard;
	TArray<uint8> Waiting; // under Guard
	bool bClosed = false; // under Guard
	FCorvanePooledWait Taken;
};
