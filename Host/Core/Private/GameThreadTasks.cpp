#include "Host/GameThreadTasks.h"

#include "Async/Async.h"
#include "CoreGlobals.h"
#include "CoreTypes.h"
#include "Host/BackgroundTasks.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace
{
	using FTask = TUniqueFunction<void()>;

	struct FTasks
	{
		std::mutex Mutex; // guards what follows
		std::condition_variable Added;
		std::vector<FTask> Queue;
		bool bClosed = false;
		bool bWaiting = false; // the game thread sleeps: only then is it worth waking
		std::atomic<std::thread::id> GameThread = std::this_thread::get_id();

		/** @param NextQueue  an empty one. */
		std::vector<FTask> TakeAll(std::vector<FTask> NextQueue = {})
		{
			const std::scoped_lock Lock(Mutex);
			return std::exchange(Queue, std::move(NextQueue));
		}

		std::vector<FTask> Spare; // empty, for the next tasks: its memory is kept from tick to tick. Thread: game thread
	};

	FTasks& theTasks()
	{
		static FTasks& Tasks = *new FTasks(); // never destroyed: threads may still post while statics go
		return Tasks;
	}
} // namespace

bool IsInGameThread()
{
	return theTasks().GameThread.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void AsyncTask(ENamedThreads::Type Thread, FTask Function)
{
	if (Thread == ENamedThreads::AnyBackgroundThreadNormalTask)
	{
		BackgroundTasks::Add(std::move(Function));
		return;
	}
	FTasks& Tasks = theTasks();
	bool bWake = false;
	{
		const std::scoped_lock Lock(Tasks.Mutex);
		if (!Tasks.bClosed)
		{
			Tasks.Queue.push_back(std::move(Function));
			bWake = std::exchange(Tasks.bWaiting, false);
		}
	}
	if (bWake)
	{
		Tasks.Added.notify_one();
	}
}

void GameThreadTasks::BindToThisThread()
{
	FTasks& Tasks = theTasks();
	const std::scoped_lock Lock(Tasks.Mutex);
	Tasks.GameThread = std::this_thread::get_id();
	Tasks.bClosed = false;
}

int GameThreadTasks::RunQueued()
{
	FTasks& Tasks = theTasks();
	std::vector<FTask> Taken = Tasks.TakeAll(std::exchange(Tasks.Spare, {}));
	for (FTask& Next : Taken)
	{
		const FTask Task = std::move(Next); // goes, with what it captured, before the next one runs
		Task();
	}
	const int Number = static_cast<int>(Taken.size());
	Taken.clear();
	Tasks.Spare = std::move(Taken);
	return Number;
}

bool GameThreadTasks::WaitUntil(std::chrono::steady_clock::time_point Deadline)
{
	FTasks& Tasks = theTasks();
	std::unique_lock Lock(Tasks.Mutex);
	const bool bQueued = Tasks.Added.wait_until(Lock, Deadline,
		[&Tasks]
		{
			Tasks.bWaiting = Tasks.Queue.empty();
			return !Tasks.bWaiting;
		});
	Tasks.bWaiting = false;
	return bQueued;
}

void GameThreadTasks::Drop(bool bForGood)
{
	{
		const std::scoped_lock Lock(theTasks().Mutex);
		theTasks().bClosed = bForGood;
	}
	theTasks().TakeAll(); // destroyed outside the lock: what a task captured may post in its destructor
}
