#include "HAL/RunnableThread.h"

#include "Containers/StringConv.h"
#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "HAL/Runnable.h"
#include "Host/SystemThreads.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace
{
	struct FJob
	{
		std::function<void()> Body;
		std::string Name;
	};

	/** One system thread that takes job after job and waits in the pool between them. */
	class FSystemThread
	{
	public:
		FSystemThread()
			: Given(FPlatformProcess::GetSynchEventFromPool())
			, Thread([this] { Loop(); })
		{
		}
		~FSystemThread() { FPlatformProcess::ReturnSynchEventToPool(Given); }

		/** Only to a new thread or to one that was taken out of the idle list. */
		void Give(FJob NewJob)
		{
			Job = std::move(NewJob);
			Given->Trigger();
		}
		void Join()
		{
			Give({}); // a job without a body ends the loop
			Thread.join();
		}

	private:
		void Loop();
		FJob Take()
		{
			Given->Wait();
			return std::move(Job);
		}

		FJob Job; // handed over by the event
		FEvent* const Given;
		std::thread Thread; // last: it starts when all else stands
	};

	struct FThreadPool
	{
		std::mutex Mutex;
		std::vector<std::unique_ptr<FSystemThread>> All;
		std::vector<FSystemThread*> Idle; // the one that finished last is taken first: its stack is warm

		bool Run(FJob Job)
		{
			FSystemThread* Thread = nullptr;
			{
				const std::scoped_lock Lock(Mutex);
				if (!Idle.empty())
				{
					Thread = Idle.back();
					Idle.pop_back();
				}
			}
			if (!Thread && !(Thread = Grow()))
			{
				return false;
			}
			Thread->Give(std::move(Job));
			return true;
		}

		FSystemThread* Grow()
		{
			try
			{
				const std::scoped_lock Lock(Mutex);
				All.push_back(std::make_unique<FSystemThread>());
				return All.back().get();
			}
			catch (const std::system_error&)
			{
				return nullptr;
			}
		}
	};

	FThreadPool& thePool()
	{
		static FThreadPool& Pool = *new FThreadPool(); // never destroyed: a program that exits early leaves its threads alone
		return Pool;
	}

	void FSystemThread::Loop()
	{
		for (FJob Next = Take(); Next.Body; Next = Take())
		{
			pthread_setname_np(pthread_self(), Next.Name.c_str());
			Next.Body();
			Next = {};
			const std::scoped_lock Lock(thePool().Mutex);
			thePool().Idle.push_back(this);
		}
	}

	class FPooledThread final : public FRunnableThread
	{
	public:
		explicit FPooledThread(FRunnable* InRunnable)
			: Runnable(InRunnable)
		{
		}
		~FPooledThread() override { Kill(true); }

		bool Start(std::string Name)
		{
			// The end is signalled through shared state: this object may be deleted the moment the wait is over.
			return thePool().Run({[Runnable = Runnable, End = End]
				{
					Runnable->Run();
					const std::scoped_lock Lock(End->Mutex);
					End->bReached = true;
					End->Condition.notify_all();
				},
				std::move(Name)});
		}

		bool Kill(bool bShouldWait) override
		{
			if (!HasEnded())
			{
				Runnable->Stop();
			}
			if (bShouldWait)
			{
				WaitForCompletion();
			}
			return true;
		}

		void WaitForCompletion() override
		{
			std::unique_lock Lock(End->Mutex);
			End->Condition.wait(Lock, [this] { return End->bReached; });
		}

	private:
		struct FEnd
		{
			std::mutex Mutex;
			std::condition_variable Condition;
			bool bReached = false;
		};

		bool HasEnded() const
		{
			const std::scoped_lock Lock(End->Mutex);
			return End->bReached;
		}

		FRunnable* Runnable;
		std::shared_ptr<FEnd> End = std::make_shared<FEnd>();
	};
} // namespace

FRunnableThread* FRunnableThread::Create(FRunnable* Runnable, const TCHAR* Name)
{
	constexpr size_t longestName = 15; // the kernel's limit
	auto Thread = std::make_unique<FPooledThread>(Runnable);
	return Thread->Start(std::string(FTCHARToUTF8(Name).Get()).substr(0, longestName)) ? Thread.release() : nullptr;
}

void HostThreads::JoinIdle()
{
	std::vector<std::unique_ptr<FSystemThread>> Ended;
	{
		const std::scoped_lock Lock(thePool().Mutex);
		Ended.swap(thePool().All);
		thePool().Idle.clear();
	}
	for (const std::unique_ptr<FSystemThread>& Thread : Ended)
	{
		Thread->Join();
	}
	// Threads that were still on their way back to the pool have listed themselves meanwhile.
	const std::scoped_lock Lock(thePool().Mutex);
	thePool().Idle.clear();
}
