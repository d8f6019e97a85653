#include "Host/BackgroundTasks.h"

#include "Async/Async.h"
#include "SystemThread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace
{
	using FTask = TUniqueFunction<void()>;

	/** A worker takes task after task and ends with the queue: waiting for more is the affair of the system threads. */
	class FBackground
	{
	public:
		void Add(FTask Task);
		void Close();
		void Open();

	private:
		void WorkOff();
		void EndWorker();
		void RunOne();
		void RunFirst(std::unique_lock<std::mutex>& Lock);

		static constexpr size_t mostWorkers = 4;

		std::mutex Mutex; // guards what follows
		std::condition_variable WorkerEnded;
		std::deque<FTask> Queue;
		size_t NumWorkers = 0;
		bool bClosed = false;
	};

	void FBackground::Add(FTask Task)
	{
		{
			const std::scoped_lock Lock(Mutex);
			if (bClosed)
			{
				return;
			}
			Queue.push_back(std::move(Task));
			if (NumWorkers == mostWorkers)
			{
				return;
			}
			++NumWorkers;
		}
		if (!runOnSystemThread([this] { WorkOff(); }, "Background")) // without the lock, which it begins with
		{
			EndWorker();
			AsyncTask(ENamedThreads::GameThread, [this] { RunOne(); }); // late is better than never
		}
	}

	void FBackground::EndWorker()
	{
		const std::scoped_lock Lock(Mutex);
		--NumWorkers;
		WorkerEnded.notify_all();
	}

	void FBackground::WorkOff()
	{
		std::unique_lock Lock(Mutex);
		while (!Queue.empty())
		{
			RunFirst(Lock);
		}
		--NumWorkers;
		WorkerEnded.notify_all();
	}

	void FBackground::RunOne()
	{
		std::unique_lock Lock(Mutex);
		if (!Queue.empty())
		{
			RunFirst(Lock);
		}
	}

	void FBackground::RunFirst(std::unique_lock<std::mutex>& Lock)
	{
		{
			const FTask Task = std::move(Queue.front());
			Queue.pop_front();
			Lock.unlock();
			Task();
		} // what it holds goes before the lock is taken again
		Lock.lock();
	}

	void FBackground::Close()
	{
		std::deque<FTask> Dropped; // destroyed without the lock: what a task captured may post in its destructor
		{
			std::unique_lock Lock(Mutex);
			bClosed = true;
			Dropped.swap(Queue);
			WorkerEnded.wait(Lock, [this] { return NumWorkers == 0; });
		}
	}

	void FBackground::Open()
	{
		const std::scoped_lock Lock(Mutex);
		bClosed = false;
	}

	FBackground& theBackground()
	{
		static FBackground& Background = *new FBackground(); // never destroyed: threads may still post while statics go
		return Background;
	}
} // namespace

void BackgroundTasks::Add(TUniqueFunction<void()> Task)
{
	theBackground().Add(std::move(Task));
}

void BackgroundTasks::Close()
{
	theBackground().Close();
}

void BackgroundTasks::Open()
{
	theBackground().Open();
}
