// The host's threads and background tasks under the schedule: linked instead of its own.

#include "HostThreads.h"

#include "Async/Async.h"
#include "Containers/StringConv.h"
#include "HAL/Runnable.h"
#include "HAL/RunnableThread.h"
#include "Host/BackgroundTasks.h"
#include "Host/SystemThreads.h"
#include "Schedule.h"

#include <deque>
#include <memory>
#include <utility>

using Orders::Schedule;

namespace
{
	bool mayRefuse = false;

	class FScheduledThread final : public FRunnableThread
	{
	public:
		explicit FScheduledThread(FRunnable* InRunnable)
			: Runnable(InRunnable)
		{
		}
		~FScheduledThread() override { Kill(true); }

		void Start(const std::string& Name)
		{
			Schedule::the().spawn(Name,
				[Runnable = Runnable, Ended = Ended]
				{
					Runnable->Run();
					*Ended = true;
				});
		}

		bool Kill(bool bShouldWait) override
		{
			Schedule::the().point("kills a thread", this);
			if (!*Ended)
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
			Schedule::the().waitUntil("waits for the end of a thread", this, [this] { return *Ended; });
		}

	private:
		FRunnable* const Runnable;
		const std::shared_ptr<bool> Ended = std::make_shared<bool>(false);
	};

	struct FBackground
	{
		std::deque<TUniqueFunction<void()>> Queue;
		int NumWorkers = 0;
		int NumRunning = 0;
		bool bClosed = true;

		void WorkOff()
		{
			while (!Queue.empty())
			{
				RunFirst();
				Schedule::the().point("has done a background task");
			}
			--NumWorkers;
		}

		void RunFirst()
		{
			const TUniqueFunction<void()> Task = std::move(Queue.front());
			Queue.pop_front();
			++NumRunning;
			Task();
			--NumRunning;
		}
	};

	FBackground& theBackground()
	{
		static FBackground Background;
		return Background;
	}
	bool isRefused()
	{
		return mayRefuse && Schedule::the().choose("wants a thread, and gets none", 2) == 1;
	}
} // namespace

void HostThreads::MayRefuse(bool bMay)
{
	mayRefuse = bMay;
}

int HostThreads::NumInBackground()
{
	return static_cast<int>(theBackground().Queue.size()) + theBackground().NumRunning;
}

FRunnableThread* FRunnableThread::Create(FRunnable* Runnable, const TCHAR* Name)
{
	if (isRefused())
	{
		return nullptr;
	}
	auto Thread = std::make_unique<FScheduledThread>(Runnable);
	Thread->Start(std::string(FTCHARToUTF8(Name).Get()).substr(0, 12));
	return Thread.release();
}

void HostThreads::JoinIdle() {}

void BackgroundTasks::Add(TUniqueFunction<void()> Task)
{
	constexpr int mostWorkers = 4;
	FBackground& Background = theBackground();
	Schedule::the().point("adds a background task");
	if (Background.bClosed)
	{
		return;
	}
	Background.Queue.push_back(std::move(Task));
	if (Background.NumWorkers == mostWorkers)
	{
		return;
	}
	if (isRefused())
	{
		AsyncTask(ENamedThreads::GameThread, // as the host does it
			[&Background]
			{
				if (!Background.Queue.empty())
				{
					Background.RunFirst();
				}
			});
	}
	else
	{
		++Background.NumWorkers;
		Schedule::the().spawn("background", [&Background] { Background.WorkOff(); });
	}
}

void BackgroundTasks::Close()
{
	FBackground& Background = theBackground();
	Background.bClosed = true;
	std::exchange(Background.Queue, {}).clear();
	Schedule::the().waitUntil("waits for background tasks", nullptr, [&Background] { return Background.NumWorkers == 0; });
}

void BackgroundTasks::Open()
{
	theBackground().bClosed = false;
}
