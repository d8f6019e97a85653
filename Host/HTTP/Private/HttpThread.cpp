#include "HttpThread.h"

#include "Host/SystemThreads.h"

#include <algorithm>
#include <csignal>
#include <pthread.h>
#include <sys/resource.h>

namespace
{
	constexpr auto idleSleep = std::chrono::minutes(1);

	/** Each running transfer may need a socket; the rest of the process needs descriptors too. */
	size_t connectionsAllowed()
	{
		rlimit Limit{};
		getrlimit(RLIMIT_NOFILE, &Limit);
		return static_cast<size_t>(std::clamp<rlim_t>(Limit.rlim_cur / 4 * 3, 16, 4096));
	}

	/** A peer that hangs up must not end the program; libcurl leaves signals alone when told to use none. */
	void blockBrokenPipeSignal()
	{
		sigset_t Signals;
		sigemptyset(&Signals);
		sigaddset(&Signals, SIGPIPE);
		pthread_sigmask(SIG_BLOCK, &Signals, nullptr);
	}
} // namespace

FHttpThread& FHttpThread::Get()
{
	static FHttpThread& Thread = *new FHttpThread(); // never destroyed: requests may outlive the end of main
	return Thread;
}

void FHttpThread::Launch(const FHttpSettings& InSettings)
{
	static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
	HOST_CHECK(initialised == CURLE_OK && !Thread.joinable());
	Settings = InSettings;
	MostRunning = connectionsAllowed();
	Queue.emplace(static_cast<size_t>(std::max(1, Settings.connectionsPerHost)));
	ShortestLimit = Settings.activityTimeoutSeconds;
	Multi.reset(curl_multi_init());
	HOST_CHECK(Multi);
	curl_multi_setopt(Multi.get(), CURLMOPT_MAXCONNECTS, static_cast<long>(MostRunning)); // libcurl's own choice forgets them after a burst
	{
		const std::scoped_lock Lock(Mutex);
		bAccepting = true;
	}
	Thread = std::thread([this] { Run(); });
	pthread_setname_np(Thread.native_handle(), "HttpThread");
}

void FHttpThread::Shutdown()
{
	if (!Thread.joinable())
	{
		return;
	}
	{
		const std::scoped_lock Lock(Mutex);
		bAccepting = false;
		curl_multi_wakeup(Multi.get());
	}
	Thread.join();
	Spare.clear();
	Multi.reset();
}

bool FHttpThread::Start(std::shared_ptr<FHttpRequest> Request)
{
	if (Push({Request, false}))
	{
		return true;
	}
	UE_LOG(LogHttp, Error, TEXT("Request refused: the HTTP service is not running"));
	Request->EndWithoutService();
	return false;
}

void FHttpThread::Cancel(std::shared_ptr<FHttpRequest> Request)
{
	Push({std::move(Request), true});
}

bool FHttpThread::Push(FCommand Command)
{
	const std::scoped_lock Lock(Mutex);
	if (!bAccepting)
	{
		return false;
	}
	Commands.push_back(std::move(Command));
	if (std::exchange(bSleeping, false))
	{
		curl_multi_wakeup(Multi.get());
	}
	return true;
}

void FHttpThread::Run()
{
	blockBrokenPipeSignal();
	for (bool bGoOn = true; bGoOn;)
	{
		Now = FTransfer::FClock::now();
		bGoOn = TakeCommands();
		if (bGoOn)
		{
			DoRound();
			Sleep();
		}
	}
	CancelAll();
	CompleteEnded();
}

void FHttpThread::DoRound()
{
	const HostThreads::FBurst Burst; // of the workers that callbacks start
	AdmitWaiting();
	int Number = 0;
	curl_multi_perform(Multi.get(), &Number);
	CollectDone();
	EndSilent();
	CompleteEnded();
}

bool FHttpThread::TakeCommands()
{
	bool bGoOn;
	{
		const std::scoped_lock Lock(Mutex);
		bSleeping = false;
		Taken.swap(Commands);
		bGoOn = bAccepting;
	}
	for (const FCommand& Command : Taken)
	{
		if (Command.bCancel)
		{
			Cancel(*Command.Request);
		}
		else
		{
			Start(*Command.Request);
		}
	}
	Taken.clear();
	return bGoOn;
}

void FHttpThread::Start(FHttpRequest& Request)
{
	Request.bEnded = false;
	if (!Request.bRefused && Request.ParseUrl())
	{
		Queue->Add(Request.shared_from_this());
	}
	else
	{
		Request.End({});
	}
}

void FHttpThread::Cancel(FHttpRequest& Request)
{
	const FHttpOutcome Cancelled{EHttpFailureReason::Cancelled, 0};
	if (Request.RunningTransfer)
	{
		End(*Request.RunningTransfer, Cancelled);
	}
	else if (!Request.bEnded)
	{
		Queue->Remove(Request);
		Request.End(Cancelled);
	}
}

void FHttpThread::Sleep()
{
	{
		const std::scoped_lock Lock(Mutex);
		if (!Commands.empty() || !bAccepting)
		{
			return;
		}
		bSleeping = true;
	}
	curl_multi_poll(Multi.get(), nullptr, 0, SleepMilliseconds(), nullptr);
}

int FHttpThread::SleepMilliseconds() const
{
	using namespace std::chrono;
	if (Queue->HasNext() && Running.size() < MostRunning)
	{
		return 0;
	}
	const auto Duration = Running.empty() ? idleSleep : ceil<milliseconds>(NextLimitCheck - steady_clock::now());
	return static_cast<int>(std::max<int64>(0, duration_cast<milliseconds>(Duration).count()));
}
