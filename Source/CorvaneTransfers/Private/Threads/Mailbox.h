#pragma once

#include "Containers/Queue.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/PooledWait.h"

/**
 * What other threads have to tell on the game thread, in the order in which they tell it. At the end of the program, when no
 * task runs any more, the game thread opens it by itself. Hold it by a shared pointer.
 */
class FCorvaneMailbox : public TSharedFromThis<FCorvaneMailbox>
{
public:
	/** Thread: any. */
	void Post(TUniqueFunction<void()> Letter);

	/** Reads what is there. Thread: game thread. */
	void Open();

	/** Waits until something is posted, or the time is over. Thread: game thread. */
	void WaitForPost(uint32 Milliseconds);

private:
	TQueue<TUniqueFunction<void()>, EQueueMode::Mpsc> Letters;
	FCorvanePooledWait Posted;
};
