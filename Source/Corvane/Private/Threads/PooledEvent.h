#pragma once

#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"

/** An event of the engine's pool for as long as this object lives. Thread: any. */
class FCorvPooledEvent
{
public:
	FCorvPooledEvent()
		: event(FPlatformProcess::GetSynchEventFromPool())
	{
	}
	~FCorvPooledEvent() { FPlatformProcess::ReturnSynchEventToPool(event); }
	FCorvPooledEvent(const FCorvPooledEvent&) = delete;
	FCorvPooledEvent& operator=(const FCorvPooledEvent&) = delete;

	FEvent* operator->() const { return event; }

private:
	FEvent* const event;
};
