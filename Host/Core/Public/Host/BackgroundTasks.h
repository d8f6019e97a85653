#pragma once

#include "Templates/Function.h"

/** What AsyncTask gives to the background: a few system threads take the tasks from one queue. */
namespace BackgroundTasks
{
	/** Thread: any. */
	void Add(TUniqueFunction<void()> Task);

	/** Destroys the queued tasks without running them, and those that come until Open, and waits for those that run. Thread: game thread. */
	void Close();

	/** Tasks are taken from now on, as at the start. Thread: game thread. */
	void Open();
} // namespace BackgroundTasks
