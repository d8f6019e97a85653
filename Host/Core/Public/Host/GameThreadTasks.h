#pragma once

#include "Templates/Function.h"

#include <chrono>

/** The queue behind AsyncTask. The loop in Launch is its one consumer. */
namespace GameThreadTasks
{
	/** Makes the calling thread the game thread. */
	void BindToThisThread();

	/** Runs the tasks that are queued now, not those they add. @return how many ran. Thread: game thread. */
	int RunQueued();

	/** @return true when a task is queued; waits for one until Deadline. Thread: game thread. */
	bool WaitUntil(std::chrono::steady_clock::time_point Deadline);

	/** Destroys the queued tasks without running them; with bForGood also every later one. Thread: game thread. */
	void Drop(bool bForGood);
} // namespace GameThreadTasks
