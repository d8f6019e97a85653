#include "HAL/Event.h"

#include "HAL/PlatformProcess.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace
{
	class FAutoResetEvent final : public FEvent
	{
	public:
		void Trigger() override
		{
			// Notified under the lock: the waiter may return the event the moment it has seen the flag.
			const std::scoped_lock Lock(Mutex);
			bSet = true;
			Condition.notify_one();
		}

		bool Wait(uint32 Milliseconds) override
		{
			std::unique_lock Lock(Mutex);
			const bool bWasSet = Condition.wait_for(Lock, std::chrono::milliseconds(Milliseconds), [this] { return bSet; });
			bSet = false;
			return bWasSet;
		}

		void Wait() override
		{
			std::unique_lock Lock(Mutex);
			Condition.wait(Lock, [this] { return bSet; });
			bSet = false;
		}

		void Clear()
		{
			const std::scoped_lock Lock(Mutex);
			bSet = false;
		}

	private:
		std::mutex Mutex;
		std::condition_variable Condition;
		bool bSet = false;
	};

	struct FEventPool
	{
		std::mutex Mutex;
		std::vector<std::unique_ptr<FAutoResetEvent>> Idle;
	};

	FEventPool& thePool()
	{
		static FEventPool Pool;
		return Pool;
	}
} // namespace

FEvent* FPlatformProcess::GetSynchEventFromPool()
{
	const std::scoped_lock Lock(thePool().Mutex);
	if (thePool().Idle.empty())
	{
		return new FAutoResetEvent();
	}
	FAutoResetEvent* Event = thePool().Idle.back().release();
	thePool().Idle.pop_back();
	return Event;
}

void FPlatformProcess::ReturnSynchEventToPool(FEvent* Event)
{
	FAutoResetEvent* Returned = static_cast<FAutoResetEvent*>(Event);
	Returned->Clear();
	const std::scoped_lock Lock(thePool().Mutex);
	thePool().Idle.emplace_back(Returned);
}
