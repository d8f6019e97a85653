#pragma once

#include "CoreTypes.h"

class FEvent;

struct FPlatformProcess
{
	/** @return an event that resets itself when a wait succeeds; give it back with ReturnSynchEventToPool. Thread: any. */
	static FEvent* GetSynchEventFromPool();
	static void ReturnSynchEventToPool(FEvent* Event);

	/** Lets at least so much time pass; 0 gives the other threads a turn. Thread: any. */
	static void Sleep(float Seconds);
};
