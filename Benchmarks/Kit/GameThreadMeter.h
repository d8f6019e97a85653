#pragma once

#include "GameLoop.h"

#include <functional>

/** CPU seconds of the game thread. */
struct TickTimes
{
	double all() const { return before + last; }

	double before = 0; // of ticks behind which the condition did not hold
	double last = 0; // of the one that brought it about
};

/**
 * Ticks until a condition holds, which only the loop's tasks and tickers can bring about.
 * @return what these took; waiting and waking up is a game's own affair and does not count, nor does reading the clock.
 */
TickTimes tickUntil(FGameLoop& loop, const std::function<bool()>& condition, double mostSeconds);
