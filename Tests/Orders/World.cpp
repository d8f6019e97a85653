#include "World.h"

#include "CorvaneTransfer.h"
#include "Host/Clock.h"
#include "Host/GameThreadTasks.h"
#include "Host/GameThreadTicks.h"
#include "Schedule.h"

#include <algorithm>

namespace Orders
{
	const std::string content = "abcdefghijkl";

	FString text(const std::string& utf8)
	{
		return FString(utf8.c_str());
	}

	World::World(const TempDir& inFolder, Disturbance inDisturbance)
		: folder(inFolder)
		, disturbance(inDisturbance)
	{
	}

	bool World::frame(double mostSeconds)
	{
		using Clock = std::chrono::steady_clock;
		const Clock::time_point latest =
			HostClock::Now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(mostSeconds));
		const bool hasTask = GameThreadTasks::WaitUntil(std::min(GameThreadTicks::NextDue(), latest));
		const bool happens = hasTask || HostClock::Now() < latest;
		loop.Tick();
		if (disturbance == Disturbance::Collection || disturbance == Disturbance::AgainInHandler)
		{
			loop.CollectGarbage();
		}
		return happens;
	}

	void World::until(const std::function<bool()>& condition)
	{
		constexpr double longest = 3600;
		double quiet = 0.01; // a condition may depend on more than tasks
		while (!condition())
		{
			quiet = frame(quiet) ? 0.01 : 2 * quiet;
			expect(quiet < longest, "what is waited for never comes");
		}
	}

	void World::letPass()
	{
		const int frames = Schedule::the().choose("lets frames pass", 3);
		for (int number = 0; number < frames && (UCorvaneBPLibrary::hasPendingWork() || UCorvaneTransfer::HasPendingWork()); ++number)
		{
			frame(0.01);
		}
	}

	void World::expect(bool holds, const std::string& what) const
	{
		if (!holds)
		{
			Schedule::the().fail(what);
		}
	}
} // namespace Orders
