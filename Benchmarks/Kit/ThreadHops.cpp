#include "Kit/ThreadHops.h"

#include <chrono>
#include <deque>
#include <semaphore>
#include <thread>

std::vector<double> measureThreadHops(int threads, double perSecond, int rounds)
{
	using Clock = std::chrono::steady_clock;
	std::vector<double> microseconds;
	Clock::time_point sent; // handed on with the signal
	std::deque<std::binary_semaphore> signals;
	for (int number = 0; number <= threads; ++number)
	{
		signals.emplace_back(0);
	}
	std::vector<std::jthread> row;
	for (auto at = signals.begin(); at + 1 != signals.end(); ++at)
	{
		const bool isLast = at + 2 == signals.end();
		row.emplace_back(
			[&, at, isLast]
			{
				for (int round = 0; round < rounds; ++round)
				{
					at->acquire();
					if (isLast)
					{
						microseconds.push_back(std::chrono::duration<double, std::micro>(Clock::now() - sent).count());
					}
					(at + 1)->release();
				}
			});
	}
	for (int round = 0; round < rounds; ++round)
	{
		std::this_thread::sleep_for(std::chrono::duration<double>(1 / perSecond));
		sent = Clock::now();
		signals.front().release();
		signals.back().acquire();
	}
	return microseconds;
}
