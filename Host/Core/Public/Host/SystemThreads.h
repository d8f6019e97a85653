#pragma once

namespace HostThreads
{
	/**
	 * As long as it stands, what its thread starts is begun by others together, with one wake-up, which costs more than a small
	 * job: at the end, as soon as several wait, or before its thread goes to sleep itself. At most one at a time on a thread.
	 */
	class FBurst
	{
	public:
		FBurst();
		~FBurst();
		FBurst(const FBurst&) = delete;
		FBurst& operator=(const FBurst&) = delete;

		/** For whatever makes the calling thread wait, maybe for what it has started: wakes up for that first. */
		static void WakeNow();
	};

	/** Ends the system threads that wait for work and joins them. Thread: game thread, when no runnable runs any more. */
	void JoinIdle();
} // namespace HostThreads
