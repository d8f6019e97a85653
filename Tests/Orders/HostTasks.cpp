// The game thread's tasks under the schedule: linked instead of the host's own.

#include "Async/Async.h"
#include "CoreGlobals.h"
#include "Host/BackgroundTasks.h"
#include "Host/Clock.h"
#include "Host/GameThreadTasks.h"
#include "Schedule.h"

#include <deque>
#include <utility>

using Orders::Schedule;

namespace
{
	struct FTasks
	{
		std::deque<TUniqueFunction<void()>> Queue;
		bool bClosed = false;
	};

	FTasks& theTasks()
	{
		static FTasks Tasks;
		return Tasks;
	}
} // namespace

bool IsInGameThread()
{
	return !Schedule::isRunning() || Schedule::self() == 0;
}

void AsyncTask(ENamedThreads::Type Thread, TUniqueFunction<void()> Function)
{
	if (Thread == ENamedThreads::AnyBackgroundThreadNormalTask)
	{
		BackgroundTasks::Add(std::move(Function));
		return;
	}
	Schedule::the().point("posts to the game thread");
	if (!theTasks().bClosed)
	{
		theTasks().Queue.push_back(std::move(Function));
	}
	Schedule::the().point("has posted");
}

void GameThreadTasks::BindToThisThread()
{
	theTasks().bClosed = false;
}

int GameThreadTasks::RunQueued()
{
	std::deque<TUniqueFunction<void()>> Taken = std::exchange(theTasks().Queue, {});
	int Number = 0;
	for (; !Taken.empty(); ++Number)
	{
		Schedule::the().point("runs a task");
		const TUniqueFunction<void()> Task = std::move(Taken.front());
		Taken.pop_front();
		Task();
	}
	return Number;
}

bool GameThreadTasks::WaitUntil(std::chrono::steady_clock::time_point Deadline)
{
	const bool bForever = Deadline == std::chrono::steady_clock::time_point::max();
	const double Seconds = bForever ? Schedule::forever : std::chrono::duration<double>(Deadline - HostClock::Now()).count();
	return Schedule::the().waitUntil(
		"waits for tasks", nullptr, [] { return !theTasks().Queue.empty(); }, Seconds);
}

void GameThreadTasks::Drop(bool bForGood)
{
	theTasks().bClosed = bForGood;
	std::exchange(theTasks().Queue, {}).clear();
}
