#pragma once

#include "Host/GameThreadTasks.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <thread>

/** Seconds that no wait in a healthy run comes near; sanitizer builds on a busy machine are slow. */
constexpr double patienceSeconds = 20;

/**
 * Waits on any thread until the condition holds; a test that waits in vain fails.
 * @param condition  asked about once per millisecond.
 * @param passTime  in between.
 * @return whether it holds.
 */
inline bool waitFor(
	const std::function<bool()>& condition, double timeoutSeconds = patienceSeconds,
	void (*passTime)() = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); })
{
	const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
	while (!condition())
	{
		if (std::chrono::steady_clock::now() > end)
		{
			ADD_FAILURE() << "waited " << timeoutSeconds << " s in vain";
			return false;
		}
		passTime();
	}
	return true;
}

/** The same for the game thread, whose tasks run in the meantime. */
inline bool pumpUntil(const std::function<bool()>& condition)
{
	return waitFor(condition, patienceSeconds,
		[]
		{
			GameThreadTasks::WaitUntil(std::chrono::steady_clock::now() + std::chrono::milliseconds(1));
			GameThreadTasks::RunQueued();
		});
}
