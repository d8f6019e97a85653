#pragma once

#include "GameLoop.h"

#include <functional>

/**
 * Ticks until a condition holds, which only the loop's tasks and tickers can bring about.
 * @return CPU seconds that these took of the game thread; waiting and waking up is a game's own affair and does not count.
 */
double tickUntil(FGameLoop& loop, const std::function<bool()>& condition, double mostSeconds);
