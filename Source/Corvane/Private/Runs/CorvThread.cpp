#include "Runs/CorvThread.h"

#include "CorvaneRequestCompleteObject.h"
#include "Misc/Guid.h"
#include "Misc/ScopeLock.h"
#include "Runs/Run.h"

FCorvThread::FCorvThread(UCorvaneRequestCompleteObject* InOwner, int64 InRunNumber)
	: completeObject(InOwner)
	, runNumber(InRunNumber)
{
}

FCorvThread::~FCorvThread()
{
	stopThread(); // before the pointer goes, or nobody would wake it
	thread.Reset();
}

void FCorvThread::addJob(TUniquePtr<FCorvTheadJob> InJob)
{
	const bool bCanWait = InJob->bEndFollows;
	if (!updateWaitingProgress(*InJob))
	{
		jobQueue.Enqueue(MoveTemp(InJob));
	}
	if (!bCanWait)
	{
		startOrWake();
	}
}

void FCorvThread::startOrWake()
{
	if (thread)
	{
		pauseThread(false);
	}
	else if (isRunning)
	{
		startThread();
	}
}

bool FCorvThread::updateWaitingProgress(FCorvTheadJob& InJob)
{
	if (InJob.isLast())
	{
		return false;
	}
	FScopeLock Lock(&progressLock);
	if (!waitingProgress)
	{
		waitingProgress = &InJob; // about to be queued
		return false;
	}
	waitingProgress->bytesSent = InJob.bytesSent;
	waitingProgress->bytesReceived = InJob.bytesReceived;
	return true;
}

bool FCorvThread::takeJob(TUniquePtr<FCorvTheadJob>& OutJob)
{
	FScopeLock Lock(&progressLock);
	const bool bTaken = jobQueue.Dequeue(OutJob);
	if (bTaken && OutJob.Get() == waitingProgress)
	{
		waitingProgress = nullptr;
	}
	return bTaken;
}

void FCorvThread::startThread()
{
	thread.Reset(FRunnableThread::Create(this, *(TEXT("FCorvThread") + FGuid::NewGuid().ToString())));
	if (!thread) // received bytes are worth more than the time of the thread that brings them
	{
		runQueuedJobs();
		if (!isRunning)
		{
			end();
		}
	}
}

void FCorvThread::pauseThread(bool bInPause)
{
	// Only a worker that has announced its sleep needs waking; one that is about to will look at its queue once more.
	if (isPaused.exchange(bInPause) && !bInPause)
	{
		wakeUp->Trigger();
	}
}

void FCorvThread::stopThread()
{
	const bool bWasRunning = isRunning.exchange(false);
	if (thread)
	{
		pauseThread(false);
	}
	else if (bWasRunning)
	{
		end();
	}
}

void FCorvThread::Stop()
{
	stopThread();
}

void FCorvThread::waitForEnd()
{
	if (thread)
	{
		thread->WaitForCompletion();
	}
}

uint32 FCorvThread::Run()
{
	while (isRunning)
	{
		runQueuedJobs();
		if (!isRunning)
		{
			break;
		}
		isPaused = true;
		// The queue is looked at again after the flag: a job that came in between has cleared it too early.
		while (isPaused && isRunning && jobQueue.IsEmpty())
		{
			wakeUp->Wait();
		}
	}
	end();
	return 0;
}

void FCorvThread::end()
{
	ended = true;
	completeObject->run().end(runNumber);
}

void FCorvThread::runQueuedJobs()
{
	// A completion job ends the loop of Run, yet what is queued after it still runs; only stopThread leaves jobs behind.
	bool bCompleted = false;
	TUniquePtr<FCorvTheadJob> Job;
	while ((isRunning || bCompleted) && takeJob(Job))
	{
		runJob(*Job);
		if (Job->isLast())
		{
			bCompleted = true;
			isRunning = false;
		}
	}
}

void FCorvThread::runJob(const FCorvTheadJob& InJob)
{
	switch (InJob.jobType)
	{
	case ECorvJobType::Complete:
		completeObject->requestCompleteInternal(InJob.request, InJob.response, InJob.bWasSuccessful);
		break;
	case ECorvJobType::CompleteLowRam:
		completeObject->requestCompleteLowRamInternal(InJob.request, InJob.response, InJob.bWasSuccessful);
		break;
	case ECorvJobType::MultiStepDownload:
		completeObject->requestMultiStepDownloadInternal(InJob.request, InJob.bytesSent, InJob.bytesReceived);
		break;
	case ECorvJobType::ProgressUpload:
		completeObject->requestProgressUploadInternal(InJob.request, InJob.bytesSent, InJob.bytesReceived);
		break;
	case ECorvJobType::ProgressDownload:
		completeObject->requestProgressDownloadInternal(InJob.request, InJob.bytesSent, InJob.bytesReceived);
		break;
	case ECorvJobType::ProgressServerSendEvent:
		completeObject->requestProgressServerSendEventInternal(InJob.request, InJob.bytesSent, InJob.bytesReceived);
		break;
	case ECorvJobType::ProgressDownloadLowRam:
		completeObject->requestProgressDownloadLowRamInternal(InJob.request, InJob.bytesSent, InJob.bytesReceived);
		break;
	case ECorvJobType::MultiStepComplete:
		completeObject->requestMultiStepCompleteInternal(InJob.request, InJob.response, InJob.bWasSuccessful);
		break;
	}
}
