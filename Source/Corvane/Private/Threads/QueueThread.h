#pragma once

#include "Containers/Queue.h"
#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"
#include "HAL/Runnable.h"
#include "HAL/RunnableThread.h"
#include "Misc/Guid.h"
#include "Misc/ScopeLock.h"
#include "Templates/UniquePtr.h"
#include "Threads/PooledEvent.h"

#include <atomic>

/**
 * Carries out jobs one after another, in the order in which they come, on a thread that starts with the first one. Where
 * the system has no thread to give, a job is carried out at once by whoever brings it: late is better than never.
 *
 * A class that derives from it calls finish in its destructor.
 */
template <class JobType>
class TCorvQueueThread : public FRunnable
{
public:
	/**
	 * @param inName  begins the name of the thread.
	 * @param inPause  milliseconds that the thread lets pass before each job, unless it is to end.
	 */
	explicit TCorvQueueThread(const TCHAR* inName, uint32 inPause = 0)
		: name(inName)
		, pause(inPause)
	{
	}

	/** Thread: any. */
	void addJob(JobType job)
	{
		++jobsLeft;
		jobQueue.Enqueue(MoveTemp(job));
		FScopeLock Lock(&threadLock);
		if (!thread) // the system may have one by now
		{
			thread.Reset(FRunnableThread::Create(this, *(name + FGuid::NewGuid().ToString())));
		}
		if (thread)
		{
			wakeUp->Trigger();
		}
		else
		{
			workOff(0);
		}
	}

	/** False when every job was carried out. Thread: any. */
	bool hasWork() const { return jobsLeft > 0; }

	virtual uint32 Run() override
	{
		for (;;)
		{
			const bool bLastRound = bIsEnding; // read first: a job queued before the end is still found
			workOff(pause);
			if (bLastRound)
			{
				return 0;
			}
			wakeUp->Wait();
		}
	}

	virtual void Stop() override
	{
		bIsEnding = true;
		endRequested->Trigger();
		wakeUp->Trigger();
	}

protected:
	/** Carries out a job. */
	virtual void work(JobType& job) = 0;

	/** Carries out what is queued, without a pause, and ends the thread. */
	void finish()
	{
		FScopeLock Lock(&threadLock);
		thread.Reset();
	}

private:
	void workOff(uint32 pauseBeforeEach)
	{
		JobType Job;
		while (jobQueue.Dequeue(Job))
		{
			if (pauseBeforeEach > 0 && !bIsEnding)
			{
				endRequested->Wait(pauseBeforeEach);
			}
			work(Job);
			--jobsLeft;
		}
	}

	const FString name;
	const uint32 pause;
	TQueue<JobType, EQueueMode::Mpsc> jobQueue;
	std::atomic<int32> jobsLeft{0};
	std::atomic<bool> bIsEnding{false};
	FCorvPooledEvent wakeUp;
	FCorvPooledEvent endRequested; // ends a pause, which a new job must not do
	FCriticalSection threadLock; // guards the making of the thread, and its work while there is none
	TUniquePtr<FRunnableThread> thread CORVANE_GUARDED_BY(threadLock);
};
