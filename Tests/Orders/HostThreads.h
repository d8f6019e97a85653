#pragma once

namespace HostThreads
{
	/** Whether the system may have no thread to give. */
	void MayRefuse(bool bMay);
} // namespace HostThreads

namespace HostEvents
{
	/** Events taken from the pool and not given back. */
	int NumTaken();
} // namespace HostEvents
