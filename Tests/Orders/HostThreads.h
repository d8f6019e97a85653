#pragma once

namespace HostThreads
{
	/** Whether the system may have no thread to give. */
	void MayRefuse(bool bMay);
	/** Background tasks that wait or run. */
	int NumInBackground();
} // namespace HostThreads

namespace HostEvents
{
	/** Events taken from the pool and not given back. */
	int NumTaken();
	/** Locks that somebody holds. */
	int NumHeld();
} // namespace HostEvents
