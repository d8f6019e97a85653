#include "Async/Async.h"
#include "CoreGlobals.h"
#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "HAL/Runnable.h"
#include "HAL/RunnableThread.h"
#include "Host/BackgroundTasks.h"
#include "Host/GameThreadTasks.h"
#include "Host/SystemThreads.h"
#include "Waiting.h"

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace
{
	/** Runs until it is stopped, and says where it ran. */
	class FWaiter : public FRunnable
	{
	public:
		~FWaiter() override { FPlatformProcess::ReturnSynchEventToPool(Event); }

		uint32 Run() override
		{
			Id = std::this_thread::get_id();
			++NumRunning;
			Event->Wait();
			--NumRunning;
			return 0;
		}
		void Stop() override { Event->Trigger(); }

		std::thread::id Id;
		static inline std::atomic<int> NumRunning{0};

	private:
		FEvent* const Event = FPlatformProcess::GetSynchEventFromPool();
	};

	/** Threads that run until this goes. */
	struct FWaiters
	{
		explicit FWaiters(size_t Number)
			: All(Number)
		{
			for (FWaiter& Waiter : All)
			{
				Threads.emplace_back(FRunnableThread::Create(&Waiter, TEXT("Waiter")));
			}
		}
		std::list<FWaiter> All;
		std::vector<std::unique_ptr<FRunnableThread>> Threads;
	};

	void post(std::function<void()> Task)
	{
		AsyncTask(ENamedThreads::GameThread, std::move(Task));
	}
} // namespace

TEST(Event, LatchesOneTriggerAndResetsItself)
{
	FEvent* Event = FPlatformProcess::GetSynchEventFromPool();
	Event->Trigger();
	Event->Trigger();
	EXPECT_TRUE(Event->Wait(0));
	EXPECT_FALSE(Event->Wait(0));
	Event->Trigger();
	FPlatformProcess::ReturnSynchEventToPool(Event);
	FEvent* Again = FPlatformProcess::GetSynchEventFromPool();
	EXPECT_FALSE(Again->Wait(0)) << "an event comes out of the pool unset";
	FPlatformProcess::ReturnSynchEventToPool(Again);
}

TEST(RunnableThread, ReusesSystemThreads)
{
	std::set<std::thread::id> Ids;
	for (int Round = 0; Round < 50; ++Round)
	{
		FWaiters Waiters(1);
		Waiters.Threads.clear();
		Ids.insert(Waiters.All.front().Id);
	}
	EXPECT_LT(Ids.size(), 10u); // a thread may still be on its way back to the pool when the next one starts
	HostThreads::JoinIdle();
}

TEST(RunnableThread, RunsManyAtOnceAndStartsAgainAfterJoining)
{
	for (int Round = 0; Round < 2; ++Round)
	{
		{
			const FWaiters Waiters(100);
			EXPECT_TRUE(waitFor([] { return FWaiter::NumRunning == 100; })) << "all of them must come to run although none ends";
		}
		EXPECT_EQ(FWaiter::NumRunning, 0) << "a thread is deleted when it has run to its end";
		HostThreads::JoinIdle();
	}
}

TEST(RunnableThread, ThreadsThatNobodyWantsEnd)
{
	const auto NumThreads = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); };
	HostThreads::JoinIdle();
	std::thread([] {}).join(); // ThreadSanitizer adds one of its own to the first
	const auto Before = NumThreads();
	for (int Round = 0; Round < 2; ++Round) // the second finds threads that have just ended
	{
		FWaiters(30);
		EXPECT_GT(NumThreads(), Before);
		EXPECT_TRUE(waitFor([&] { return NumThreads() == Before; }));
	}
	HostThreads::JoinIdle();
}

TEST(GameThreadTasks, RunInOrderAndNeverInsideTheCall)
{
	std::vector<int> Order;
	post(
		[&]
		{
			post([&] { Order.push_back(3); });
			Order.push_back(1);
		});
	post([&] { Order.push_back(2); });
	EXPECT_TRUE(Order.empty());
	EXPECT_EQ(GameThreadTasks::RunQueued(), 2);
	EXPECT_EQ(Order, (std::vector{1, 2}));
	EXPECT_EQ(GameThreadTasks::RunQueued(), 1);
	EXPECT_EQ(Order.back(), 3);
}

TEST(GameThreadTasks, WakeTheLoopFromAnotherThread)
{
	EXPECT_FALSE(GameThreadTasks::WaitUntil(std::chrono::steady_clock::now() + std::chrono::milliseconds(20)));
	bool bOnGameThread = false;
	std::thread Poster([&] { post([&] { bOnGameThread = IsInGameThread(); }); });
	EXPECT_TRUE(GameThreadTasks::WaitUntil(std::chrono::steady_clock::now() + std::chrono::seconds(10)));
	Poster.join();
	GameThreadTasks::RunQueued();
	EXPECT_TRUE(bOnGameThread);
}

TEST(GameThreadTasks, DropsWithoutRunning)
{
	const auto Held = std::make_shared<int>(0);
	const auto Post = [&] { post([Held] { ++*Held; }); };
	Post();
	GameThreadTasks::Drop(true);
	Post();
	EXPECT_EQ(GameThreadTasks::RunQueued(), 0);
	EXPECT_EQ(Held.use_count(), 1) << "dropped tasks let go of what they captured";
	GameThreadTasks::BindToThisThread();
	Post();
	EXPECT_EQ(GameThreadTasks::RunQueued(), 1);
	EXPECT_EQ(*Held, 1);
}

TEST(BackgroundTasks, RunSeveralAtATimeAndEndWithTheProgram)
{
	GameThreadTasks::BindToThisThread();
	struct FShared
	{
		std::atomic<int> NumRunning{0};
		std::atomic<int> NumRun{0};
		std::atomic<bool> bGo{false};
	};
	const auto Shared = std::make_shared<FShared>();
	const auto Post = [&Shared](int Number)
	{
		for (int Index = 0; Index < Number; ++Index)
		{
			AsyncTask(ENamedThreads::AnyBackgroundThreadNormalTask,
				[Shared]
				{
					++Shared->NumRunning;
					waitFor([&] { return Shared->bGo.load(); });
					Shared->NumRun += IsInGameThread() ? 1000 : 1;
				});
		}
	};
	Post(20);
	EXPECT_TRUE(waitFor([&] { return Shared->NumRunning > 1; }));
	Shared->bGo = true;
	EXPECT_TRUE(waitFor([&] { return Shared->NumRun == 20; }));

	Shared->bGo = false;
	Post(100);
	EXPECT_TRUE(waitFor([&] { return Shared->NumRunning > 20; }));
	std::thread Releaser([Shared] { Shared->bGo = true; });
	BackgroundTasks::Close();
	Releaser.join();
	EXPECT_EQ(Shared->NumRun, Shared->NumRunning) << "what had begun has come to its end";
	Post(1);
	EXPECT_EQ(Shared.use_count(), 1) << "what had not is let go";
	BackgroundTasks::Open();
	Post(1);
	EXPECT_TRUE(waitFor([&] { return Shared.use_count() == 1; }));
	HostThreads::JoinIdle();
}
