#include "Uploads/TruncateUploadedFileThread.h"

#include "Misc/ScopeLock.h"
#include "Uploads/ChangedFiles.h"
#include "Uploads/UploadRepair.h"

FCorvTruncateUploadedFileThread::FCorvTruncateUploadedFileThread(FCorvChangedFiles& InFiles, double InGracePeriodSeconds)
	: TCorvQueueThread(TEXT("FCorvTruncateUploadedFileThread"), static_cast<uint32>(InGracePeriodSeconds * 1000))
	, changedFiles(InFiles)
{
}

FCorvTruncateUploadedFileThread::~FCorvTruncateUploadedFileThread()
{
	finish();
}

void FCorvTruncateUploadedFileThread::addRequest(FhttpRequest InRecord)
{
	changedFiles.waitForRepair(InRecord.filePath);
	addJob(MoveTemp(InRecord));
}

void FCorvTruncateUploadedFileThread::work(FhttpRequest& InRecord)
{
	CorvaneUpload::repair(InRecord);
	changedFiles.endRepair(InRecord.filePath); // whatever came of it, or the file could never be uploaded again
}

void UCorvaneBPLibrary::addRequestToTruncateThread(FhttpRequest& InRequest)
{
	FhttpRequest Record = InRequest;
	Record.setRequestCompleteObject(nullptr); // it belongs to the game thread
	TSharedPtr<FCorvTruncateUploadedFileThread> Thread;
	{
		FScopeLock Lock(&mapLock);
		if (!truncateThread)
		{
			truncateThread = MakeShared<FCorvTruncateUploadedFileThread>(*changedFiles, uploadGracePeriodSeconds);
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
	return changedFiles->isWaitingForRepair(InPath);
}

void UCorvaneBPLibrary::endUploads()
{
	for (FhttpRequest& Record : changedFiles->unfinished())
	{
		addRequestToTruncateThread(Record);
	}
	TSharedPtr<FCorvTruncateUploadedFileThread> Thread; // carries out the queued repairs when it goes, outside the lock
	FScopeLock Lock(&mapLock);
	Thread = MoveTemp(truncateThread);
}
