#include "Kit/GameThreadMeter.h"

#include "Host/GameThreadTasks.h"
#include "Host/GameThreadTicks.h"
#include "Kit/ProcessFigures.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

double tickUntil(FGameLoop& loop, const std::function<bool()>& condition, double mostSeconds)
{
	using Clock = std::chrono::steady_clock;
	constexpr std::chrono::microseconds shortestTick(250); // results that come closely after each other share one, as in a game
	const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(mostSeconds));
	double seconds = 0;
	for (;;)
	{
		const Clock::time_point began = Clock::now();
		const StopWatch watch;
		loop.Tick();
		seconds += watch.threadCpuSeconds();
		if (condition())
		{
			return seconds;
		}
		if (began >= deadline)
		{
			throw std::runtime_error("the benchmark takes too long");
		}
		GameThreadTasks::WaitUntil(std::min(deadline, GameThreadTicks::NextDue()));
		std::this_thread::sleep_until(began + shortestTick);
	}
}
