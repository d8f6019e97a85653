#pragma once

#include "Completion/CorvTheadJob.h"
#include "Containers/Queue.h"
#include "HAL/Runnable.h"

#include <atomic>

class FEvent;
class FRunnableThread;
class UCorvaneRequestCompleteObject;

/**
 * The worker of one running request: it runs the jobs that the request's callbacks queue, in order, and ends after the
 * completion job. Owned by the completion object and freed on the game thread.
 */
class FCorvThread : public FRunnable
{
public:
	/** Starts the thread. @param owner  outlives this object. */
	FCorvThread(UCorvaneRequestCompleteObject* owner, int64 runNumber);
	/** Waits for the thread, and frees the jobs it has not run. */
	virtual ~FCorvThread() override;

	/** False when the system had no thread to give: no job will ever run. */
	bool isStarted() const { return thread != nullptr; }
	/** True when the thread has run its last job. Thread: any. */
	bool hasEnded() const { return ended; }

	/**
	 * Queues one job and wakes the worker.
	 * @param job  not null; ownership passes to the queue.
	 * @note Thread: HTTP callback. Never blocks; jobs run in call order.
	 */
	void addJob(FCorvTheadJob* job);
	/** Lets the idle worker look at its queue (false). Thread: any. */
	void pauseThread(bool pause);
	/** Ends the worker after the job it is in; what is queued behind that is freed, not run. Thread: any. */
	void stopThread();
	/** Waits until the worker has ended. Not from the worker. */
	void waitForEnd();

	virtual uint32 Run() override;
	virtual void Stop() override;

private:
	void runQueuedJobs();
	void runJob(const FCorvTheadJob& job);

	UCorvaneRequestCompleteObject* const completeObject;
	const int64 runNumber;
	std::atomic<bool> isRunning{true};
	std::atomic<bool> isPaused{false};
	std::atomic<bool> ended{false};
	TQueue<FCorvTheadJob*, EQueueMode::Mpsc> jobQueue;
	FEvent* wakeUp; // from the engine's pool
	FRunnableThread* thread = nullptr; // owned
};
