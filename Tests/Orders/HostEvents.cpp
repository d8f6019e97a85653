// The host's events, locks, clock and chance under the schedule: linked instead of its own.

#include "HAL/CriticalSection.h"
#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "HAL/PlatformTime.h"
#include "Host/Clock.h"
#include "HostThreads.h"
#include "Math/UnrealMathUtility.h"
#include "Schedule.h"

#include <unordered_map>
#include <utility>

namespace
{
	class FScheduledEvent final : public FEvent
	{
	public:
		void Trigger() override
		{
			Schedule::the().point("triggers an event", this);
			bSet = true;
			Schedule::the().point("has triggered an event", this);
		}
		bool Wait(uint32 Milliseconds) override { return WaitFor(Milliseconds == MAX_uint32 ? Schedule::forever : Milliseconds / 1000.0); }
		void Wait() override { WaitFor(Schedule::forever); }

	private:
		bool WaitFor(double Seconds)
		{
			Schedule::the().waitUntil(
				"waits for an event", this, [this] { return bSet; }, Seconds);
			return std::exchange(bSet, false);
		}

		bool bSet = false;
	};

	struct FHolder
	{
		int Thread = -1;
		int Depth = 0;
	};

	std::unordered_map<const FCriticalSection*, FHolder> Holders;
} // namespace

FEvent* FPlatformProcess::GetSynchEventFromPool()
{
	++HostEvents::NumTaken;
	return new FScheduledEvent();
}

void FPlatformProcess::ReturnSynchEventToPool(FEvent* Event)
{
	--HostEvents::NumTaken;
	delete Event;
}

void FPlatformProcess::Sleep(float Seconds)
{
	Schedule::the().waitUntil(
		"sleeps", nullptr, [] { return false; }, Seconds);
}

void FCriticalSection::Lock()
{
	if (!Schedule::isRunning())
	{
		return;
	}
	Schedule::the().point("takes a lock", this);
	const int Self = Schedule::self();
	const auto IsFree = [this, Self]
	{
		const auto Found = Holders.find(this);
		return Found == Holders.end() || Found->second.Thread == Self;
	};
	if (!IsFree())
	{
		Schedule::the().waitUntil("waits for a lock", this, IsFree);
	}
	FHolder& Holder = Holders[this];
	Holder.Thread = Self;
	HostEvents::NumHeld += ++Holder.Depth == 1;
}

void FCriticalSection::Unlock()
{
	if (!Schedule::isRunning() || --Holders[this].Depth > 0)
	{
		return;
	}
	Holders.erase(this);
	--HostEvents::NumHeld;
	Schedule::the().point("has left a lock", this);
}

std::chrono::steady_clock::time_point HostClock::Now()
{
	using Clock = std::chrono::steady_clock;
	constexpr double start = 1000; // the machine has been on for a while
	return Clock::time_point(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(start + Schedule::the().now())));
}

std::chrono::system_clock::time_point HostClock::Today()
{
	using Clock = std::chrono::system_clock;
	constexpr std::chrono::seconds start(1'700'000'000);
	return Clock::time_point(start) + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(Schedule::the().now()));
}

double FPlatformTime::Seconds()
{
	return std::chrono::duration<double>(HostClock::Now().time_since_epoch()).count();
}

float FMath::FRand()
{
	return 0.5f;
}
