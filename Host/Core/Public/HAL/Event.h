#pragma once

#include "CoreTypes.h"

/** A latch that one thread sets and another waits for; taken from and returned to a pool by FPlatformProcess. */
class FEvent
{
public:
	virtual ~FEvent() = default;
	/** Wakes one waiter, or lets the next Wait through at once. Thread: any. */
	virtual void Trigger() = 0;
	/** @return false when the time was over first. */
	virtual bool Wait(uint32 Milliseconds) = 0;
	virtual void Wait() = 0;
};
