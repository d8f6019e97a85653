#include "Uploads/TruncateUploadedFileThread.h"

#include "HAL/Event.h"
#include "HAL/PlatformProcess.h"
#include "HAL/RunnableThread.h"
#include "Misc/Guid.h"
#include "Misc/ScopeLock.h"
#include "Uploads/UploadFiles.h"
#include "Uploads/UploadRepair.h"

FCorvTruncateUploadedFileThread::FCorvTruncateUploadedFileThread(FCorvUploadFiles& InFiles, double InGracePeriodSeconds)
	: uploadFiles(InFiles)
	, graceMilliseconds(static_cast<uint32>(InGracePeriodSeconds * 1000))
	, wakeUp(FPlatformProcess::GetSynchEventFromPool())
	, stopRequested(FPlatformProcess::GetSynchEventFromPool())
{
	thread = FRunnableThread::Create(this, *(TEXT("FCorvTruncateUploadedFileThread") + FGuid::NewGuid().ToString()));
}

FCorvTruncateUploadedFileThread::~FCorvTruncateUploadedFileThread()
{
	delete thread;
	FPlatformProcess::ReturnSynchEventToPool(wakeUp);
	FPlatformProcess::ReturnSynchEventToPool(stopRequested);
}

void FCorvTruncateUploadedFileThread::addRequest(FhttpRequest InRecord)
{
	uploadFiles.waitForRepair(InRecord.filePath);
	++recordsLeft;
	if (!thread)
	{
		repair(InRecord); // late is better than never, and early better than not at all
		return;
	}
	requestQueue.Enqueue(MoveTemp(InRecord));
	wakeUp->Trigger();
}

void FCorvTruncateUploadedFileThread::Stop()
{
	isStopping = true;
	stopRequested->Trigger();
	wakeUp->Trigger();
}

uint32 FCorvTruncateUploadedFileThread::Run()
{
	for (;;)
	{
		const bool bLastRound = isStopping; // read first: a record queued before the stop is still found
		repairQueued();
		if (bLastRound)
		{
			return 0;
		}
		wakeUp->Wait();
	}
}

void FCorvTruncateUploadedFileThread::repairQueued()
{
	FhttpRequest Record;
	while (requestQueue.Dequeue(Record))
	{
		if (!isStopping)
		{
			stopRequested->Wait(graceMilliseconds);
		}
		repair(Record);
	}
}

void FCorvTruncateUploadedFileThread::repair(const FhttpRequest& InRecord)
{
	CorvaneUpload::repair(InRecord);
	uploadFiles.endRepair(InRecord.filePath); // whatever came of it, or the file could never be uploaded again
	--recordsLeft;
}

void UCorvaneBPLibrary::addRequestToTruncateThread(FhttpRequest& InRequest)
{
	FhttpRequest Record = InRequest;
	Record.setRequestCompleteObject(nullptr); // it belongs to the game thread
	FCorvTruncateUploadedFileThread* Thread;
	{
		FScopeLock Lock(&mapLock);
		if (!truncateThread)
		{
			truncateThread = new FCorvTruncateUploadedFileThread(*uploadFiles, uploadGracePeriodSeconds);
		}
		Thread = truncateThread;
	}
	Thread->addRequest(MoveTemp(Record));
}

void UCorvaneBPLibrary::setUploadGracePeriod(double InSeconds)
{
	FScopeLock Lock(&mapLock);
	uploadGracePeriodSeconds = InSeconds;
}

bool UCorvaneBPLibrary::isFileBlocked(FString InPath)
{
	return uploadFiles->isWaitingForRepair(InPath);
}

void UCorvaneBPLibrary::endUploads()
{
	for (FhttpRequest& Record : uploadFiles->unfinished())
	{
		addRequestToTruncateThread(Record);
	}
	FCorvTruncateUploadedFileThread* Thread = nullptr;
	{
		FScopeLock Lock(&mapLock);
		Thread = truncateThread;
		truncateThread = nullptr;
	}
	delete Thread; // carries out the queued repairs
}
