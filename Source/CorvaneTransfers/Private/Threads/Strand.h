#pragma once

#include "Containers/Queue.h"
#include "CoreMinimal.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"

#include <atomic>

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

	TQueue<TUniqueFunction<void()>, EQueueMode::Mpsc> Steps;
	std::atomic<int32> StepsLeft{0}; // whoever brings the first one asks for a thread
};
