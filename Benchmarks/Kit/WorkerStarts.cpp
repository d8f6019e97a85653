#include "Kit/WorkerStarts.h"

#include "Containers/Queue.h"
#include "Kit/ProcessFigures.h"

#include <atomic>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace
{
	/** A new system thread whose maker waits until it runs. */
	class NewThread final : public FRunnableThread
	{
	public:
		explicit NewThread(FRunnable* runnable)
			: thread(
				  [this, runnable]
				  {
					  runs.trigger();
					  runnable->Run();
				  })
		{
			runs.wait();
		}
		~NewThread() override { NewThread::WaitForCompletion(); }

		bool Kill(bool) override { throw std::logic_error("these workers end by themselves"); }
		void WaitForCompletion() override
		{
			if (thread.joinable())
			{
				thread.join();
			}
		}

	private:
		PooledEvent runs;
		std::thread thread; // last: it starts when all else stands
	};

	FRunnableThread* makeNewThread(FRunnable* runnable)
	{
		try
		{
			return new NewThread(runnable);
		}
		catch (const std::system_error&)
		{
			return nullptr; // the request that waits for it says so
		}
	}

	class ByFirstJob final : public WorkerStart
	{
	public:
		void firstJob(OneJobWorker& worker) override
		{
			worker.queueJob();
			worker.start(makeNewThread);
		}
	};

	class ByGameThread final : public WorkerStart
	{
	public:
		void beginRequest(OneJobWorker& worker) override { worker.start(makeNewThread); }
		void firstJob(OneJobWorker& worker) override { worker.queueJob(); }
	};

	class ByStarter final : public WorkerStart
	{
	public:
		~ByStarter() override
		{
			isRunning = false;
			wakeUp.trigger();
		}

		void firstJob(OneJobWorker& worker) override
		{
			worker.queueJob();
			wishes.Enqueue(&worker);
			if (isAsleep.exchange(false))
			{
				wakeUp.trigger();
			}
		}

	private:
		void startAll()
		{
			for (OneJobWorker* worker = nullptr; wishes.Dequeue(worker);)
			{
				worker->start(makeNewThread);
			}
		}

		void loop()
		{
			while (isRunning)
			{
				startAll();
				isAsleep = true;
				// The queue is looked at again after the flag: a wish that came in between has woken nobody.
				if (wishes.IsEmpty())
				{
					wakeUp.wait();
				}
			}
		}

		TQueue<OneJobWorker*, EQueueMode::Mpsc> wishes;
		std::atomic<bool> isRunning{true};
		std::atomic<bool> isAsleep{false};
		PooledEvent wakeUp;
		std::jthread helper{[this] { loop(); }}; // last: it starts when all else stands
	};

	class ByStandIn final : public WorkerStart
	{
	public:
		void firstJob(OneJobWorker& worker) override
		{
			worker.queueJob();
			worker.start([](FRunnable* runnable) { return FRunnableThread::Create(runnable, TEXT("OneJobWorker")); });
		}
	};
} // namespace

void OneJobWorker::start(const MakeThread& makeThread)
{
	thread.reset(makeThread(this));
	hasThread.release();
}

OneJobWorker::Clock::time_point OneJobWorker::waitForJob()
{
	hasThread.acquire();
	if (!thread)
	{
		throw std::runtime_error("the system has no thread to give");
	}
	done.wait();
	return jobBegan;
}

uint32 OneJobWorker::Run()
{
	constexpr double smallAnswerSeconds = 10e-6; // the order of a small answer's text, headers and event
	job.wait();
	jobBegan = Clock::now();
	const double end = ProcessFigures::threadCpuSeconds() + smallAnswerSeconds;
	while (ProcessFigures::threadCpuSeconds() < end)
	{
	}
	done.trigger();
	return 0;
}

std::unique_ptr<WorkerStart> WorkerStarts::byFirstJob()
{
	return std::make_unique<ByFirstJob>();
}

std::unique_ptr<WorkerStart> WorkerStarts::byGameThread()
{
	return std::make_unique<ByGameThread>();
}

std::unique_ptr<WorkerStart> WorkerStarts::byStarter()
{
	return std::make_unique<ByStarter>();
}

std::unique_ptr<WorkerStart> WorkerStarts::byStandIn()
{
	return std::make_unique<ByStandIn>();
}
