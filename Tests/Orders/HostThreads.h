#pragma once

namespace HostThreads
{
	/** Whether the system may have no thread to give. */
	inline bool bMayRefuse = false;
	/** Background tasks that wait or run. */
	inline int NumInBackground = 0;
} // namespace HostThreads

namespace HostEvents
{
	/** Events taken from the pool and not given back. */
	inline int NumTaken = 0;
	/** Locks that somebody holds. */
	inline int NumHeld = 0;
} // namespace HostEvents
