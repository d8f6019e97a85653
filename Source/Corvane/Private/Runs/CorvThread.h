#pragma once

#include "Containers/Queue.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "HAL/Runnable.h"
#include "HAL/RunnableThread.h"
#include "Runs/CorvTheadJob.h"
#include "Templates/UniquePtr.h"
#include "Threads/PooledEvent.h"

#include <atomic>

class UCorvaneRequestCompleteObject;

/**
 * The worker of one running request: it runs the jobs that the request's callbacks queue, in order, and ends after the
 * completion job. Its thread starts with the first job, or with the completion when all of a small answer comes at once.
 * Owned by the completion object and freed on the game thread.
 *
 * The owner never lets addJob and stopThread run at the same time.
 */
class FCorvThread : public FRunnable
{
public:
	/** @param owner  outlives this object. */
	FCorvThread(UCorvaneRequestCompleteObject* owner, int64 runNumber);
	/** Waits for the thread. */
	virtual ~FCorvThread() override;

	/** True when the last job has run. Thread: any. */
	bool hasEnded() const { return ended; }

	/**
	 * Queues one job and starts or wakes the worker, but for progress that the completion follows at once: a small answer is
	 * then one turn of the worker and not two. Progress that finds earlier progress still waiting only brings that up to date:
	 * no flood of callbacks makes a queue long.
	 * @param job  not null.
	 * @note Thread: HTTP callback. Jobs run in call order; on the calling thread only when the system has no thread to give.
	 */
	void addJob(TUniquePtr<FCorvTheadJob> job);
	/** Lets the idle worker look at its queue (false). Thread: any. */
	void pauseThread(bool pause);
	/** Ends the worker after the job it is in; what is queued after that is freed, not run. Thread: any. */
	void stopThread();
	/** Waits until a stopped worker has ended. Not from the worker. */
	void waitForEnd();

	virtual uint32 Run() override;
	virtual void Stop() override;

private:
	bool updateWaitingProgress(FCorvTheadJob& job);
	bool takeJob(TUniquePtr<FCorvTheadJob>& job);
	void startOrWake();
	void startThread();
	void runQueuedJobs();
	void runJob(const FCorvTheadJob& job);
	void end();

	UCorvaneRequestCompleteObject* const completeObject;
	const int64 runNumber;
	std::atomic<bool> isRunning{true};
	std::atomic<bool> isPaused{false};
	std::atomic<bool> ended{false};
	TQueue<TUniquePtr<FCorvTheadJob>, EQueueMode::Mpsc> jobQueue;
	FCriticalSection progressLock;
	FCorvTheadJob* waitingProgress CORVANE_GUARDED_BY(progressLock) = nullptr; // in the queue; its numbers are guarded, too
	FCorvPooledEvent wakeUp;
	TUniquePtr<FRunnableThread> thread; // null until a job has to be run
};
