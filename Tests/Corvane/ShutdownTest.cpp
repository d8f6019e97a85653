#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "Misc/CoreDelegates.h"
#include "ModuleFixture.h"

namespace
{
	class EndOfProgram : public ModuleFixture
	{
	protected:
		EndOfProgram() { silent.at("/", Lab::stall()); }

		/** Starts so many requests that are never answered. */
		void startUnanswered(int number)
		{
			for (int count = 0; count < number; ++count)
			{
				execute(get(silent.url()));
			}
			ASSERT_TRUE(waitFor([&] { return silent.running() == number; }));
		}
		int errors(const char* part) const { return log.count("LogTemp", ELogVerbosity::Error, part); }

		LogCapture log;
		Lab::Origin silent;
	};
} // namespace

TEST_F(EndOfProgram, CancelsWhatStillRuns)
{
	startUnanswered(50);
	const auto start = std::chrono::steady_clock::now();
	loop.Shutdown();
	EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4)) << "it need not use up its time limit";
	EXPECT_TRUE(completions.empty()) << "tasks that are left are dropped, but " << completions.front().statusCode << " came";
	EXPECT_EQ(UCorvaneBPLibrary::getCorvaneTarget(), nullptr);
	EXPECT_FALSE(UCorvaneBPLibrary::hasPendingWork());
}

TEST_F(EndOfProgram, EndsRequestsWhileAllObjectsAreThere)
{
	struct Observer
	{
		void look()
		{
			UCorvaneBPLibrary* target = nullptr;
			UCorvaneBPLibrary::executeHttpRequests(late, target);
			hasLibrary = target != nullptr;
			isIdle = !UCorvaneBPLibrary::hasPendingWork();
		}
		TArray<FhttpRequest> late;
		bool hasLibrary = false;
		bool isIdle = false;
	} observer;
	startUnanswered(1);
	observer.late = get(silent.url());
	FCoreDelegates::OnPreExit.AddRaw(&observer, &Observer::look); // it hears of the end after the module
	loop.Shutdown();
	FCoreDelegates::OnPreExit.RemoveAll(&observer);
	EXPECT_TRUE(observer.hasLibrary);
	EXPECT_TRUE(observer.isIdle) << "modules are shut down too late for what a request still has to do";
	EXPECT_EQ(errors("The module is shutting down."), 1) << "no new request";
}

TEST_F(EndOfProgram, RecordsAreRefusedWithoutALibraryAndSkippedByALaterOne)
{
	const TArray<FhttpRequest> before = get(silent.url());
	loop.Shutdown();
	const TArray<FhttpRequest> between = get(silent.url());
	UCorvaneBPLibrary* target = UCorvaneBPLibrary::corv;
	UCorvaneBPLibrary::executeHttpRequests(before, target);
	EXPECT_EQ(target, nullptr);
	EXPECT_EQ(errors("executeHttpRequests"), 1);

	constexpr const char* skipped = "UCorvaneBPLibrary: Missing Object instance (153).";
	const int skippedBefore = errors(skipped);
	FGameLoop next;
	execute(before);
	execute(between);
	EXPECT_EQ(errors(skipped) - skippedBefore, 2);
	EXPECT_FALSE(UCorvaneBPLibrary::hasPendingWork());
}
