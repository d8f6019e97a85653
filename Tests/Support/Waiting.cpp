#include "Waiting.h"

#include "Host/GameThreadTasks.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

using Clock = std::chrono::steady_clock;

namespace
{
	bool waitWith(const std::function<bool()>& condition, double timeoutSeconds, const std::function<void()>& passTime)
	{
		const Clock::time_point end =
			Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(timeoutSeconds));
		while (!condition())
		{
			if (Clock::now() > end)
			{
				ADD_FAILURE() << "waited " << timeoutSeconds << " s in vain";
				return false;
			}
			passTime();
		}
		return true;
	}
} // namespace

bool waitFor(const std::function<bool()>& condition, double timeoutSeconds)
{
	return waitWith(condition, timeoutSeconds, [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); });
}

bool pumpUntil(const std::function<bool()>& condition, double timeoutSeconds)
{
	return waitWith(condition, timeoutSeconds,
		[]
		{
			GameThreadTasks::WaitUntil(Clock::now() + std::chrono::milliseconds(1));
			GameThreadTasks::RunQueued();
		});
}
