#include "GameLoop.h"

#include "Host/BackgroundTasks.h"
#include "Host/Directories.h"
#include "Host/GameThreadTasks.h"
#include "Host/GameThreadTicks.h"
#include "Host/Objects.h"
#include "Host/SystemThreads.h"
#include "Misc/CoreDelegates.h"
#include "Modules/ModuleManager.h"

#include <algorithm>
#include <thread>

namespace
{
	using FClock = std::chrono::steady_clock;

	// Results that arrive closely after each other share a tick: waking up for each would cost more than handling it.
	constexpr std::chrono::microseconds shortestTick(250);

	/**
	 * A condition may depend on more than tasks, so it is asked again even when none came; ever less often, because a
	 * program that idles shall not be felt.
	 */
	FClock::duration untilAskedAgain(FClock::duration Quiet)
	{
		return std::clamp<FClock::duration>(Quiet / 8, std::chrono::milliseconds(10), std::chrono::milliseconds(125));
	}

	/** Collecting costs a walk over all objects, so it waits until a fair share of them is new. */
	bool isCollectionDue()
	{
		constexpr size_t smallestHarvest = 64; // one of hundreds would be felt in a frame
		return HostObjects::NumCreatedSinceCollection() > std::max(smallestHarvest, HostObjects::NumObjects() / 2);
	}
} // namespace

FGameLoop::FGameLoop(const FGameLoopSettings& Settings)
	: bCollectAfterEveryTick(Settings.bCollectAfterEveryTick)
{
	HostDirectories::Set(Settings.projectDirectory, Settings.baseDirectory);
	GameThreadTasks::BindToThisThread();
	BackgroundTasks::Open();
	HttpService::Start(Settings.http);
	HostObjects::CreateDefaultObjects();
	for (const FModuleRegistration* Registration = FModuleRegistration::First(); Registration; Registration = Registration->Next)
	{
		Modules.push_back(Registration->Create());
		Modules.back()->StartupModule();
	}
}

FGameLoop::~FGameLoop()
{
	Shutdown();
}

void FGameLoop::Tick()
{
	if (GameThreadTasks::RunQueued() + GameThreadTicks::RunDue() > 0)
	{
		LastTasks = FClock::now();
	}
	if (bCollectAfterEveryTick || isCollectionDue())
	{
		HostObjects::CollectGarbage();
	}
}

bool FGameLoop::WaitFor(const std::function<bool()>& Condition, double Seconds)
{
	using namespace std::chrono;
	LastTasks = FClock::now();
	const auto Deadline = LastTasks + duration_cast<FClock::duration>(duration<double>(Seconds));
	for (;;)
	{
		Tick();
		if (Condition())
		{
			return true;
		}
		if (FClock::now() >= Deadline)
		{
			return false;
		}
		WaitForTasks(Deadline);
	}
}

void FGameLoop::RunUntilIdle(const std::function<bool()>& HasPendingWork, const std::function<bool()>& Abort)
{
	LastTasks = FClock::now();
	for (;;)
	{
		Tick();
		if (Abort && Abort())
		{
			return;
		}
		// In this order: whoever ends its work has posted its last task before.
		if (HasPendingWork())
		{
			WaitForTasks(FClock::time_point::max());
		}
		else if (!GameThreadTasks::WaitUntil(FClock::now()))
		{
			return;
		}
	}
}

void FGameLoop::CollectGarbage()
{
	HostObjects::CollectGarbage();
}

void FGameLoop::Shutdown()
{
	if (!std::exchange(bRunning, false))
	{
		return;
	}
	FCoreDelegates::OnPreExit.Broadcast();
	for (auto Module = Modules.rbegin(); Module != Modules.rend(); ++Module)
	{
		(*Module)->ShutdownModule();
	}
	HttpService::Stop();
	BackgroundTasks::Close();
	GameThreadTasks::Drop(true);
	GameThreadTicks::Drop();
	HostObjects::DestroyAll();
	Modules.clear();
	HostThreads::JoinIdle();
}

void FGameLoop::WaitForTasks(FClock::time_point Deadline) const
{
	const FClock::time_point Now = FClock::now();
	std::this_thread::sleep_until(std::min(Deadline, LastTasks + shortestTick));
	GameThreadTasks::WaitUntil(std::min({Deadline, GameThreadTicks::NextDue(), Now + untilAskedAgain(Now - LastTasks)}));
}
