#pragma once

#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"

/** An event of the engine's pool for as long as this object lives. Thread: any. */
class FCorvanePooledWait
{
public:
	FCorvanePooledWait()
		: Event(FPlatformProcess::GetSynchEventFromPool())
	{
	}
	~FCorvanePooledWait() { FPlatformProcess::ReturnSynchEventToPool(Event); }
	FCorvanePooledWait(const FCorvanePooledWait&) = delete;
	FCorvanePooledWait& operator=(const FCorvanePooledWait&) = delete;

	FEvent* operator->() const { return Event; }

private:
	FEvent* const Event;
};
