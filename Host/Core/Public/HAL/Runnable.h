#pragma once

#include "CoreTypes.h"

/** What a thread runs. */
class FRunnable
{
public:
	virtual ~FRunnable() = default;
	/** The thread's work. Thread: the new thread. */
	virtual uint32 Run() = 0;
	/** Asks Run to come to its end. Thread: the caller's. */
	virtual void Stop() {}
};
