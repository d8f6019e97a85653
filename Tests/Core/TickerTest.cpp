#include "Containers/Ticker.h"
#include "GameLoop.h"
#include "HAL/PlatformTime.h"
#include "Waiting.h"

#include <gtest/gtest.h>
#include <thread>

TEST(Ticker, IsCalledByTheLoopAfterItsDelayUntilItWantsNoMore)
{
	FGameLoop loop;
	const double began = FPlatformTime::Seconds();
	double second = 0;
	int calls = 0, removed = 0, others = 0;
	FTSTicker::FDelegateHandle other;
	FTickerDelegate twice;
	twice.BindLambda(
		[&](float passed)
		{
			EXPECT_GT(passed, 0);
			FTSTicker::RemoveTicker(other);
			second = FPlatformTime::Seconds();
			return ++calls < 2;
		});
	const FTSTicker::FDelegateHandle handle = FTSTicker::GetCoreTicker().AddTicker(twice, 0.1f);
	FTickerDelegate never;
	never.BindLambda([&removed](float) { return ++removed > 0; });
	other = FTSTicker::GetCoreTicker().AddTicker(never, 0.15f); // after the one that removes it
	FTickerDelegate frames;
	frames.BindLambda([&others](float) { return ++others < 3; });
	std::thread([&frames] { FTSTicker::GetCoreTicker().AddTicker(frames); }).join();

	EXPECT_TRUE(loop.WaitFor([&] { return calls == 2 && others == 3; }, patienceSeconds));
	EXPECT_GE(second - began, 0.2);
	EXPECT_FALSE(handle.IsValid()) << "it is forgotten with its last call";
	loop.Tick();
	EXPECT_EQ(calls, 2);
	EXPECT_EQ(removed, 0);
	FTSTicker::RemoveTicker(handle); // harmless
}
