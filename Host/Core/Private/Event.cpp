#include "HAL/Event.h"

#include "HAL/PlatformProcess.h"
#include "Host/SystemThreads.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <memory>
#include <mutex>
#include <semaphore.h>
#include <thread>
#include <vector>

namespace
{
	/** The moment that many milliseconds from now, on the clock that nobody sets. */
	timespec monotonicDeadline(uint32 Milliseconds)
	{
		constexpr long nanosecondsPerSecond = 1'000'000'000;
		timespec End{};
		clock_gettime(CLOCK_MONOTONIC, &End);
		End.tv_nsec += static_cast<long>(Milliseconds % 1000) * 1'000'000;
		End.tv_sec += Milliseconds / 1000 + End.tv_nsec / nanosecondsPerSecond;
		End.tv_nsec %= nanosecondsPerSecond;
		return End;
	}

	/**
	 * One system call to wake, one to sleep, none when nobody waits: every callback of every request goes through here. The
	 * standard library's condition variable takes a lock as well, and its timed semaphore can miss a wake-up in the release
	 * that we build with.
	 */
	class FAutoResetEvent final : public FEvent
	{
	public:
		FAutoResetEvent() { sem_init(&Semaphore, 0, 0); }
		~FAutoResetEvent() override { sem_destroy(&Semaphore); }

		void Trigger() override
		{
			if (!bSet.exchange(true))
			{
				sem_post(&Semaphore);
			}
		}

		bool Wait(uint32 Milliseconds) override
		{
			HostThreads::FBurst::WakeNow();
			const timespec End = monotonicDeadline(Milliseconds);
			return Finish([&] { return sem_clockwait(&Semaphore, CLOCK_MONOTONIC, &End); });
		}

		void Wait() override
		{
			HostThreads::FBurst::WakeNow();
			Finish([this] { return sem_wait(&Semaphore); });
		}

		void Clear()
		{
			Finish([this] { return sem_trywait(&Semaphore); });
		}

	private:
		/** Repeats a wait that a signal broke off. @return whether the event was set; it no longer is. */
		template <class Waiting>
		bool Finish(Waiting WaitOnce)
		{
			int Result;
			while ((Result = WaitOnce()) != 0 && errno == EINTR)
			{
			}
			return Result == 0 && bSet.exchange(false);
		}

		sem_t Semaphore; // 1 exactly when bSet is true, but for the moment between the two
		std::atomic<bool> bSet{false};
	};

	struct FEventPool
	{
		std::mutex Mutex; // guards what follows
		std::vector<std::unique_ptr<FAutoResetEvent>> Idle;
	};

	FEventPool& theEventPool()
	{
		static FEventPool& Pool = *new FEventPool(); // never destroyed: a late Trigger must find its event
		return Pool;
	}
} // namespace

void FPlatformProcess::Sleep(float Seconds)
{
	HostThreads::FBurst::WakeNow();
	std::this_thread::sleep_for(std::chrono::duration<float>(Seconds));
}

FEvent* FPlatformProcess::GetSynchEventFromPool()
{
	const std::scoped_lock Lock(theEventPool().Mutex);
	if (theEventPool().Idle.empty())
	{
		return new FAutoResetEvent();
	}
	FAutoResetEvent* Event = theEventPool().Idle.back().release();
	theEventPool().Idle.pop_back();
	return Event;
}

void FPlatformProcess::ReturnSynchEventToPool(FEvent* Event)
{
	FAutoResetEvent* Returned = static_cast<FAutoResetEvent*>(Event);
	Returned->Clear();
	const std::scoped_lock Lock(theEventPool().Mutex);
	theEventPool().Idle.emplace_back(Returned);
}
