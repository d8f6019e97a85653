#pragma once

#include <functional>

/** Seconds that no wait in a healthy run comes near; sanitizer builds on a busy machine are slow. */
constexpr double patienceSeconds = 20;

/**
 * Waits on any thread until the condition holds; a test that waits in vain fails.
 * @param condition  asked about once per millisecond.
 * @return whether it holds.
 */
bool waitFor(const std::function<bool()>& condition, double timeoutSeconds = patienceSeconds);

/** The same for the game thread, whose tasks run in the meantime. */
bool pumpUntil(const std::function<bool()>& condition, double timeoutSeconds = patienceSeconds);
