#pragma once

#include <vector>

/**
 * Hands a signal along a row of sleeping threads, again and again at a steady rate.
 * @param threads  in the row; each wakes the next.
 * @return microseconds from the first signal to the waking of the last thread, one for each round.
 */
std::vector<double> measureThreadHops(int threads, double perSecond, int rounds);
