#pragma once

#include "Host/HttpService.h"
#include "RequestQueue.h"
#include "Transfer.h"

#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/**
 * The one thread that moves bytes. Others hand it commands; each round it takes those, lets libcurl work, completes what
 * has ended and sleeps until a socket, a timer or a command wakes it. No round costs time for transfers in which nothing
 * happened, apart from what libcurl itself spends on them.
 */
class FHttpThread
{
public:
	static FHttpThread& Get();

	/** The two behind HttpService. Thread: game thread. */
	void Launch(const FHttpSettings& InSettings);
	void Shutdown();

	/** Whether all callbacks belong to the game thread. */
	bool ForcesGameThread() const { return Settings.bForceGameThreadCallbacks; }
	/**
	 * Takes a request; one that is refused, or has no URL that may be asked for, completes as failed. Thread: any.
	 * @return false when none is taken now.
	 */
	bool Start(std::shared_ptr<FHttpRequest> Request);
	/** Ends a request that was handed to Start, unless it is over. Thread: any. */
	void Cancel(std::shared_ptr<FHttpRequest> Request);

private:
	struct FMultiCleanup
	{
		void operator()(CURLM* Handle) const { curl_multi_cleanup(Handle); }
	};
	struct FCommand
	{
		std::shared_ptr<FHttpRequest> Request;
		bool bCancel;
	};

	bool Push(FCommand Command);

	void Run();
	void DoRound();
	bool TakeCommands();
	void Start(FHttpRequest& Request);
	void Cancel(FHttpRequest& Request);
	void CancelAll();
	void AdmitWaiting();
	void Begin(std::shared_ptr<FHttpRequest> Request);
	void CollectDone();
	void EndSilent();
	void End(FTransfer& Transfer, FHttpOutcome Outcome);
	void CompleteEnded();
	void Sleep();
	int SleepMilliseconds() const;

	std::mutex Mutex; // guards what follows
	std::vector<FCommand> Commands;
	bool bAccepting = false;
	bool bSleeping = false;

	// Set while no HTTP thread runs:
	FHttpSettings Settings;
	std::unique_ptr<CURLM, FMultiCleanup> Multi;
	size_t MostRunning = 0;
	std::thread Thread;

	// HTTP thread only:
	FTransfer::FClock::time_point Now; // of this round
	FTransfer::FClock::time_point NextLimitCheck;
	double ShortestLimit = 0; // seconds, of all transfers so far
	std::vector<FCommand> Taken;
	std::optional<FRequestQueue> Queue; // made anew with each launch
	std::vector<std::unique_ptr<FTransfer>> Running;
	std::vector<std::unique_ptr<FTransfer>> Spare;
	std::vector<FTransfer*> Ended; // in this round
};
