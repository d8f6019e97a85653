#pragma once

namespace HostThreads
{
	/** Ends the system threads that wait for work and joins them. Thread: game thread, when no runnable runs any more. */
	void JoinIdle();
} // namespace HostThreads
