#pragma once

#include "Callbacks.h"
#include "Host/HttpService.h"
#include "Transfer.h"

#include <deque>
#include <thread>

/**
 * The one thread that moves bytes. Others hand it commands; each round it takes those, lets libcurl work, runs the
 * callbacks that are due and sleeps until a socket, a timer or a command wakes it. No round costs time for transfers in
 * which nothing happened, apart from what libcurl itself spends on them.
 */
class FHttpThread
{
public:
	static FHttpThread& Get();

	/** The three behind HttpService. Thread: game thread. */
	void Launch(const FHttpSettings& InSettings);
	void EndGameThreadCallbacks() { Callbacks.EndGameThread(); }
	void Shutdown();

	/** Takes a request, which completes as failed when its Outgoing is not set. @return false when none is taken now. Thread: any. */
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
	bool TakeCommands();
	void Execute(FCommand& Command);
	void CancelAll();
	void AdmitWaiting();
	void Begin(std::shared_ptr<FHttpRequest> Request);
	void CollectDone();
	void EndStalled();
	void End(FTransfer& Transfer, bool bSucceeded);
	void ReportProgress();
	void Report(FTransfer& Transfer);
	void CompleteEnded();
	void Complete(const std::shared_ptr<FHttpRequest>& Request, bool bSucceeded);
	void Sleep();
	int SleepMilliseconds() const;

	std::mutex Mutex; // guards what follows
	std::vector<FCommand> Commands;
	bool bAccepting = false;
	bool bSleeping = false;

	// Set while no HTTP thread runs:
	FHttpSettings Settings;
	FCallbacks Callbacks;
	std::unique_ptr<CURLM, FMultiCleanup> Multi;
	size_t MostRunning = 0;
	std::thread Thread;

	// HTTP thread only:
	FRound Round;
	std::chrono::steady_clock::time_point NextStallCheck;
	std::vector<FCommand> Taken;
	std::deque<std::shared_ptr<FHttpRequest>> Waiting; // beyond MostRunning
	std::vector<std::unique_ptr<FTransfer>> Running;
	std::vector<std::unique_ptr<FTransfer>> Spare;
	std::vector<FTransfer*> Ended; // in this round
};
