// The game thread's tasks under the schedule: linked instead of the host's own.

#include "Async/Async.h"
#include "CoreGlobals.h"
#include "Host/BackgroundTasks.h"
#include "Host/Clock.h"
#include "Host/GameThreadTasks.h"
#include "Schedule.h"

#include <deque>
#include <utility>

namespace
{
	std::deque<TUniqueFunction<void()>> Queue;
	bool bQueueClosed = false;
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
	if (!bQueueClosed)
	{
		Queue.push_back(std::move(Function));
	}
	Schedule::the().point("has posted");
}

void GameThreadTasks::BindToThisThread()
{
	bQueueClosed = false;
}

int GameThreadTasks::RunQueued()
{
	std::deque<TUniqueFunction<void()>> Taken = std::exchange(Queue, {});
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
		"waits for tasks", nullptr, [] { return !Queue.empty(); }, Seconds);
}

void GameThreadTasks::Drop(bool bForGood)
{
	bQueueClosed = bForGood;
	std::exchange(Queue, {}).clear();
}
