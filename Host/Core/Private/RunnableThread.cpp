#include "HAL/RunnableThread.h"

#include "Containers/StringConv.h"
#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "HAL/Runnable.h"
#include "Host/SystemThreads.h"
#include "SystemThread.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace
{
	struct FJob
	{
		std::function<void()> Body;
		std::string Name;
	};

	class FSystemThread;

	/**
	 * System threads that take job after job. A job waits in a queue until a thread looks there: one that has just finished
	 * another, which costs nothing, or one that is woken. Only the first of a burst is woken by whoever brings the jobs; each
	 * that comes wakes the next while jobs are left. For every waiting job there is a thread idle or on its way. A thread
	 * that nobody wants for a while ends. Nobody is woken under the lock, which the woken one needs first of all.
	 */
	class FThreadPool
	{
	public:
		/** @return false when the system has no further thread. */
		bool Run(FJob Job);
		/** Sees to it that a thread comes for what waits. */
		void WakeForWaiting();
		/** Takes the next job; goes to sleep while there is none. @return a job without a body when the thread is to end. */
		FJob Next(FSystemThread& Thread);
		void JoinIdle();

	private:
		bool Grow();
		FSystemThread* ForWaiting();
		FSystemThread& TakeIdle();
		bool SleepUntilWoken(std::unique_lock<std::mutex>& Lock, FSystemThread& Thread);
		void Retire(std::unique_lock<std::mutex>& Lock, FSystemThread& Thread);

		std::mutex Mutex; // guards what follows
		std::vector<std::unique_ptr<FSystemThread>> All;
		std::unique_ptr<FSystemThread> Retired; // the last thread that ended for want of work: it cannot join itself
		std::vector<FSystemThread*> Idle; // the one that finished last is taken first: its stack is warm
		std::deque<FJob> Waiting;
		size_t OnTheirWay = 0; // threads that were woken or made and have not looked for a job yet
		bool bClosing = false;
	};

	struct FHeldBack
	{
		bool bHolding = false;
		int Number = 0;
	};
	thread_local FHeldBack heldBack; // what the calling thread has started in a burst, and woken nobody for

	/** @return whether the wake-up for a job that the calling thread brings can wait for others. */
	bool holdBack()
	{
		constexpr int mostHeldBack = 8; // so many are worth a wake-up, and none shall wait for long
		const bool bHold = heldBack.bHolding && heldBack.Number + 1 < mostHeldBack;
		heldBack.Number = bHold ? heldBack.Number + 1 : 0;
		return bHold;
	}

	class FSystemThread
	{
	public:
		explicit FSystemThread(FThreadPool& InPool)
			: Pool(InPool)
			, Thread([this] { Loop(); })
		{
		}

		void Wake() { Woken->Trigger(); }
		/** @return false when nobody woke the thread in time. */
		bool Sleep(uint32 Milliseconds) { return Woken->Wait(Milliseconds); }
		void Sleep() { Woken->Wait(); }
		void Join() { Thread.join(); }

		bool bOnItsWay = true; // guarded by the pool's lock

	private:
		void Loop()
		{
			for (FJob Job = Pool.Next(*this); Job.Body; Job = Pool.Next(*this))
			{
				pthread_setname_np(pthread_self(), Job.Name.c_str());
				Job.Body();
				Job = {}; // what it holds goes before the thread looks for more
			}
		}

		struct FReturnToPool
		{
			void operator()(FEvent* Event) const { FPlatformProcess::ReturnSynchEventToPool(Event); }
		};

		FThreadPool& Pool;
		const std::unique_ptr<FEvent, FReturnToPool> Woken{FPlatformProcess::GetSynchEventFromPool()};
		std::thread Thread; // last: it starts when all else stands
	};

	bool FThreadPool::Run(FJob Job)
	{
		FSystemThread* Thread = nullptr;
		{
			const std::scoped_lock Lock(Mutex);
			if (Idle.size() + OnTheirWay <= Waiting.size() && !Grow())
			{
				return false;
			}
			Waiting.push_back(std::move(Job));
			Thread = holdBack() ? nullptr : ForWaiting();
		}
		if (Thread)
		{
			Thread->Wake();
		}
		return true;
	}

	void FThreadPool::WakeForWaiting()
	{
		FSystemThread* Thread = nullptr;
		{
			const std::scoped_lock Lock(Mutex);
			Thread = ForWaiting();
		}
		if (Thread)
		{
			Thread->Wake();
		}
	}

	FJob FThreadPool::Next(FSystemThread& Thread)
	{
		std::unique_lock Lock(Mutex);
		for (;;)
		{
			if (std::exchange(Thread.bOnItsWay, false))
			{
				--OnTheirWay;
			}
			if (!Waiting.empty())
			{
				FJob Job = std::move(Waiting.front());
				Waiting.pop_front();
				FSystemThread* Another = ForWaiting();
				Lock.unlock();
				if (Another)
				{
					Another->Wake();
				}
				return Job;
			}
			if (bClosing)
			{
				return {};
			}
			if (!SleepUntilWoken(Lock, Thread))
			{
				Retire(Lock, Thread);
				return {};
			}
		}
	}

	/** @return false when the thread is not wanted; it is not among the idle ones any more then. */
	bool FThreadPool::SleepUntilWoken(std::unique_lock<std::mutex>& Lock, FSystemThread& Thread)
	{
		constexpr uint32 patienceMilliseconds = 2000;
		Idle.push_back(&Thread);
		Lock.unlock();
		const bool bWoken = Thread.Sleep(patienceMilliseconds);
		Lock.lock();
		if (!bWoken && Thread.bOnItsWay)
		{
			Lock.unlock();
			Thread.Sleep(); // about to be woken: the wake-up must not be left for the next sleep
			Lock.lock();
		}
		if (!Thread.bOnItsWay)
		{
			std::erase(Idle, &Thread);
		}
		return Thread.bOnItsWay || !Waiting.empty(); // a waiting job counts on every idle thread, also on one that gives up
	}

	/** The calling thread is about to end; whoever retires next, or closes, joins it. */
	void FThreadPool::Retire(std::unique_lock<std::mutex>& Lock, FSystemThread& Thread)
	{
		const auto Own = std::find_if(All.begin(), All.end(), [&](const auto& Other) { return Other.get() == &Thread; });
		const std::unique_ptr<FSystemThread> Previous = std::exchange(Retired, std::move(*Own));
		All.erase(Own);
		Lock.unlock();
		if (Previous)
		{
			Previous->Join();
		}
	}

	bool FThreadPool::Grow()
	{
		try
		{
			All.push_back(std::make_unique<FSystemThread>(*this)); // it waits for the lock that is held here
			++OnTheirWay;
			return true;
		}
		catch (const std::system_error&)
		{
			return false;
		}
	}

	/** @return an idle thread that is to be woken; null when nothing waits, or one is on its way. */
	FSystemThread* FThreadPool::ForWaiting()
	{
		return !Waiting.empty() && OnTheirWay == 0 ? &TakeIdle() : nullptr;
	}

	/** The thread is on its way from here on: it is to be woken, once. */
	FSystemThread& FThreadPool::TakeIdle()
	{
		FSystemThread& Thread = *Idle.back();
		Idle.pop_back();
		Thread.bOnItsWay = true;
		++OnTheirWay;
		return Thread;
	}

	void FThreadPool::JoinIdle()
	{
		std::vector<std::unique_ptr<FSystemThread>> Ended;
		{
			const std::scoped_lock Lock(Mutex);
			bClosing = true;
			Ended.swap(All);
			if (Retired)
			{
				Ended.push_back(std::move(Retired));
			}
			while (!Idle.empty())
			{
				TakeIdle().Wake();
			}
		}
		for (const std::unique_ptr<FSystemThread>& Thread : Ended)
		{
			Thread->Join();
		}
		const std::scoped_lock Lock(Mutex);
		bClosing = false;
	}

	FThreadPool& theThreadPool()
	{
		static FThreadPool& Pool = *new FThreadPool(); // never destroyed: a program that exits early leaves its threads alone
		return Pool;
	}

	class FPooledThread final : public FRunnableThread
	{
	public:
		explicit FPooledThread(FRunnable* InRunnable)
			: Runnable(InRunnable)
		{
		}
		~FPooledThread() override
		{
			if (bStarted)
			{
				Kill(true);
			}
		}

		bool Start(std::string Name)
		{
			// The end is signalled through shared state: this object may be deleted the moment the wait is over.
			bStarted = theThreadPool().Run({[Runnable = Runnable, End = End]
				{
					Runnable->Run();
					const std::scoped_lock Lock(End->Mutex);
					End->bReached = true;
					End->Condition.notify_all();
				},
				std::move(Name)});
			return bStarted;
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
			HostThreads::FBurst::WakeNow();
			std::unique_lock Lock(End->Mutex);
			End->Condition.wait(Lock, [this] { return End->bReached; });
		}

	private:
		struct FEnd
		{
			std::mutex Mutex; // guards what follows
			std::condition_variable Condition;
			bool bReached = false;
		};

		bool HasEnded() const
		{
			const std::scoped_lock Lock(End->Mutex);
			return End->bReached;
		}

		FRunnable* Runnable;
		bool bStarted = false;
		std::shared_ptr<FEnd> End = std::make_shared<FEnd>();
	};
} // namespace

FRunnableThread* FRunnableThread::Create(FRunnable* Runnable, const TCHAR* Name)
{
	constexpr size_t longestName = 15; // the kernel's limit
	auto Thread = std::make_unique<FPooledThread>(Runnable);
	return Thread->Start(std::string(FTCHARToUTF8(Name).Get()).substr(0, longestName)) ? Thread.release() : nullptr;
}

bool runOnSystemThread(std::function<void()> Body, std::string Name)
{
	return theThreadPool().Run({std::move(Body), std::move(Name)});
}

HostThreads::FBurst::FBurst()
{
	heldBack.bHolding = true;
}

HostThreads::FBurst::~FBurst()
{
	heldBack.bHolding = false;
	WakeNow();
}

void HostThreads::FBurst::WakeNow()
{
	if (std::exchange(heldBack.Number, 0) > 0)
	{
		theThreadPool().WakeForWaiting();
	}
}

void HostThreads::JoinIdle()
{
	theThreadPool().JoinIdle();
}
