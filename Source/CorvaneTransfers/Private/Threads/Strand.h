#pragma once

#include "Containers/Queue.h"
#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

/**
 * Carries out steps one after another, in the order in which they come, on the engine's background threads: it has no thread
 * of its own, and needs none while there is nothing to do. Hold it by a shared pointer; queued steps do so, too. Thread: any.
 */
class FCorvaneStrand : public TSharedFromThis<FCorvaneStrand>
{
public:
	void Add(TUniqueFunction<void()> Step);

private:
	void WorkOff();
	bool Take(TUniqueFunction<void()>& Step);

	FCriticalSection Guard;
	TQueue<TUniqueFunction<void()>> Steps CORVANE_GUARDED_BY(Guard);
	bool bWorking CORVANE_GUARDED_BY(Guard) = false; // a thread is at them, or on its way
};
