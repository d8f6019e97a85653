#pragma once

#include "CoreMinimal.h"
#include "Queue/QueueRun.h"
#include "Templates/SharedPointer.h"

class UCorvaneTransferQueue;

/** The queues of this program, by name. Thread: game thread. */
namespace CorvaneQueues
{
	/** Finds a queue or makes it. */
	TSharedRef<FCorvaneQueueRun> Get(const FString& Name);
	/** @return whether a transfer waits or runs in any of them. */
	bool HavePendingWork();
	/** Nothing waits any more: all begins, to be ended with what runs. */
	void LetGoOfAll();
	/** Forgets them. */
	void Clear();
} // namespace CorvaneQueues
