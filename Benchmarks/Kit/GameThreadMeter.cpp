#include "Kit/GameThreadMeter.h"

#include "Host/GameThreadTasks.h"
#include "Host/GameThreadTicks.h"
#include "Kit/ProcessFigures.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

TickTimes tickUntil(FGameLoop& loop, const std::function<bool()>& condition, double mostSeconds)
{
	using Clock = std::chrono::steady_clock;
	constexpr std::chrono::microseconds shortestTick(250); // results that come closely after each other share one, as in a game
	const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(mostSeconds));
	TickTimes times;
	for (;;)
	{
		const Clock::time_point began = Clock::now();
		const double before = ProcessFigures::threadCpuSeconds();
		loop.Tick();
		const double behind = ProcessFigures::threadCpuSeconds();
		const double ofTheClock = ProcessFigures::threadCpuSeconds() - behind;
		times.last = std::max(0.0, behind - before - ofTheClock);
		if (condition())
		{
			return times;
		}
		times.before += times.last;
		if (began >= deadline)
		{
			throw std::runtime_error("the benchmark takes too long");
		}
		GameThreadTasks::WaitUntil(std::min(deadline, GameThreadTicks::NextDue()));
		std::this_thread::sleep_until(began + shortestTick);
	}
}
