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

namespace
{
	class FScheduledThread final : public FRunnableThread
	{
	public:
		FScheduledThread(FRunnable* InRunnable, const std::string& Name)
			: Runnable(InRunnable)
		{
			Schedule::the().spawn(Name,
				[Runnable = Runnable, Ended = Ended]
				{
					Runnable->Run();
					*Ended = true;
				});
		}
		~FScheduledThread() override { Kill(true); }

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

	std::deque<TUniqueFunction<void()>> Background;
	int NumWorkers = 0;
	bool bThreadsEnded = true;

	void RunFirst()
	{
		const TUniqueFunction<void()> Task = std::move(Background.front());
		Background.pop_front();
		Task();
		--HostThreads::NumInBackground;
	}

	void WorkOff()
	{
		while (!Background.empty())
		{
			RunFirst();
			Schedule::the().point("has done a background task");
		}
		--NumWorkers;
	}

	bool isRefused()
	{
		return HostThreads::bMayRefuse && Schedule::the().choose("wants a thread, and gets none", 2) == 1;
	}
} // namespace

FRunnableThread* FRunnableThread::Create(FRunnable* Runnable, const TCHAR* Name)
{
	if (isRefused())
	{
		return nullptr;
	}
	return new FScheduledThread(Runnable, std::string(FTCHARToUTF8(Name).Get()).substr(0, 12));
}

void HostThreads::JoinIdle() {}

void BackgroundTasks::Add(TUniqueFunction<void()> Task)
{
	constexpr int mostWorkers = 4;
	Schedule::the().point("adds a background task");
	if (bThreadsEnded)
	{
		return;
	}
	Background.push_back(std::move(Task));
	++HostThreads::NumInBackground;
	if (NumWorkers == mostWorkers)
	{
		return;
	}
	if (isRefused())
	{
		AsyncTask(ENamedThreads::GameThread, [] { Background.empty() ? void() : RunFirst(); }); // as the host does it
		return;
	}
	++NumWorkers;
	Schedule::the().spawn("background", &WorkOff);
}

void BackgroundTasks::Close()
{
	bThreadsEnded = true;
	HostThreads::NumInBackground -= static_cast<int>(Background.size());
	std::exchange(Background, {}).clear();
	Schedule::the().waitUntil("waits for background tasks", nullptr, [] { return NumWorkers == 0; });
}

void BackgroundTasks::Open()
{
	bThreadsEnded = false;
}
