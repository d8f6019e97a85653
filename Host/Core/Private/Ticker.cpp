#include "Containers/Ticker.h"

#include "Async/Async.h"
#include "CoreGlobals.h"
#include "Host/Clock.h"
#include "Host/GameThreadTicks.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

using FClock = std::chrono::steady_clock;

struct FTSTicker::FElement
{
	FTickerDelegate Delegate;
	FClock::duration Interval;
	FClock::time_point Due;
	bool bRemoved = false; // game thread
};

namespace
{
	using FElements = std::vector<TSharedPtr<FTSTicker::FElement>>;

	/** A loop that has nothing else to do makes so many frames a second for those who want to see each. */
	constexpr FClock::duration frame = std::chrono::milliseconds(16);

	struct FTicks
	{
		std::mutex Mutex; // guards what follows
		FElements Elements;
		FClock::time_point LastFrame = HostClock::Now(); // game thread
	};

	FTicks& theTicks()
	{
		static FTicks& Ticks = *new FTicks(); // never destroyed: threads may still add while statics go
		return Ticks;
	}

	void add(const TSharedPtr<FTSTicker::FElement>& Element)
	{
		const std::scoped_lock Lock(theTicks().Mutex);
		theTicks().Elements.push_back(Element);
	}

	FElements takeDue(FClock::time_point Now)
	{
		FTicks& Ticks = theTicks();
		const std::scoped_lock Lock(Ticks.Mutex);
		const auto isLater = [Now](const TSharedPtr<FTSTicker::FElement>& Element) { return Element->Due > Now; };
		if (std::all_of(Ticks.Elements.begin(), Ticks.Elements.end(), isLater))
		{
			return {}; // as in most frames
		}
		const auto FirstDue = std::stable_partition(Ticks.Elements.begin(), Ticks.Elements.end(), isLater);
		FElements Due(FirstDue, Ticks.Elements.end());
		Ticks.Elements.erase(FirstDue, Ticks.Elements.end());
		return Due;
	}
} // namespace

FTSTicker& FTSTicker::GetCoreTicker()
{
	static FTSTicker Ticker;
	return Ticker;
}

FTSTicker::FDelegateHandle FTSTicker::AddTicker(const FTickerDelegate& InDelegate, float InDelay)
{
	const auto Delay = std::chrono::duration_cast<FClock::duration>(std::chrono::duration<float>(std::max(InDelay, 0.0f)));
	const FClock::duration Interval = std::max(Delay, frame);
	const TSharedRef<FElement> Element(std::make_shared<FElement>(FElement{InDelegate, Interval, HostClock::Now() + Interval}));
	add(Element);
	if (!IsInGameThread())
	{
		AsyncTask(ENamedThreads::GameThread, [] {}); // wakes the loop, which may be asleep until later
	}
	return Element;
}

void FTSTicker::RemoveTicker(FDelegateHandle Handle)
{
	const TSharedPtr<FElement> Removed = Handle.Pin();
	if (Removed.IsValid())
	{
		Removed->bRemoved = true;
		const std::scoped_lock Lock(theTicks().Mutex);
		std::erase(theTicks().Elements, Removed);
	}
}

int GameThreadTicks::RunDue()
{
	const FClock::time_point Now = HostClock::Now();
	const FElements Due = takeDue(Now);
	const float Passed = std::chrono::duration<float>(Now - std::exchange(theTicks().LastFrame, Now)).count();
	int Number = 0;
	for (const TSharedPtr<FTSTicker::FElement>& Element : Due)
	{
		if (Element->bRemoved)
		{
			continue; // by one that was called before it
		}
		++Number;
		if (Element->Delegate.Execute(Passed) && !Element->bRemoved)
		{
			Element->Due = HostClock::Now() + Element->Interval;
			add(Element);
		}
	}
	return Number;
}

FClock::time_point GameThreadTicks::NextDue()
{
	FTicks& Ticks = theTicks();
	const std::scoped_lock Lock(Ticks.Mutex);
	FClock::time_point Next = FClock::time_point::max();
	for (const TSharedPtr<FTSTicker::FElement>& Element : Ticks.Elements)
	{
		Next = std::min(Next, Element->Due);
	}
	return Next;
}

void GameThreadTicks::Drop()
{
	FElements Dropped;
	const std::scoped_lock Lock(theTicks().Mutex);
	Dropped.swap(theTicks().Elements);
}
