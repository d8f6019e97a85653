#pragma once

#include <chrono>

/** The time that everything in here goes by. */
namespace HostClock
{
	/** Thread: any. */
	std::chrono::steady_clock::time_point Now();
	/** The same by the calendar. */
	std::chrono::system_clock::time_point Today();
} // namespace HostClock
