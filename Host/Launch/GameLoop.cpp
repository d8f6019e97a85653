#include "GameLoop.h"

#include "Host/Directories.h"
#include "Host/GameThreadTasks.h"
#include "Host/Objects.h"
#include "Host/SystemThreads.h"
#include "Modules/ModuleManager.h"

#include <algorithm>

namespace
{
	// A condition may depend on more than tasks, so it is asked again after this time even when none came.
	constexpr std::chrono::milliseconds longestWait(10);

	/** Collecting costs a walk over all objects, so it waits until a fair share of them is new. */
	bool isCollectionDue()
	{
		constexpr size_t smallestHarvest = 256;
		return HostObjects::NumCreatedSinceCollection() > std::max(smallestHarvest, HostObjects::NumObjects() / 2);
	}
} // namespace

FGameLoop::FGameLoop(const FGameLoopSettings& Settings)
	: bCollectAfterEveryTick(Settings.bCollectAfterEveryTick)
{
	HostDirectories::Set(Settings.projectDirectory, Settings.baseDirectory);
	GameThreadTasks::BindToThisThread();
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
	GameThreadTasks::RunQueued();
	if (bCollectAfterEveryTick || isCollectionDue())
	{
		HostObjects::CollectGarbage();
	}
}

bool FGameLoop::WaitFor(const std::function<bool()>& Condition, double Seconds)
{
	using namespace std::chrono;
	const auto Deadline = steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(Seconds));
	for (;;)
	{
		Tick();
		if (Condition())
		{
			return true;
		}
		const auto Left = Deadline - steady_clock::now();
		if (Left <= steady_clock::duration::zero())
		{
			return false;
		}
		TasksQueuedWithin(std::min<steady_clock::duration>(Left, longestWait));
	}
}

void FGameLoop::RunUntilIdle(const std::function<bool()>& HasPendingWork, const std::function<bool()>& Abort)
{
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
			TasksQueuedWithin(longestWait);
		}
		else if (!TasksQueuedWithin({}))
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
	HttpService::EndGameThreadCallbacks();
	for (auto Module = Modules.rbegin(); Module != Modules.rend(); ++Module)
	{
		(*Module)->ShutdownModule();
	}
	HttpService::Stop();
	GameThreadTasks::Drop(true);
	HostObjects::DestroyAll();
	Modules.clear();
	HostThreads::JoinIdle();
}

bool FGameLoop::TasksQueuedWithin(std::chrono::steady_clock::duration Time) const
{
	return GameThreadTasks::WaitUntil(std::chrono::steady_clock::now() + Time);
}
