#pragma once

#include "Containers/Ticker.h"

#include <chrono>

/** The delegates behind FTSTicker. The loop in Launch calls them. Thread: game thread. */
namespace GameThreadTicks
{
	/** Calls those whose time has come, none twice. @return how many were called. */
	int RunDue();

	/** @return when the next one is due; the end of time when there is none. */
	std::chrono::steady_clock::time_point NextDue();

	/** Forgets all of them. */
	void Drop();
} // namespace GameThreadTicks
