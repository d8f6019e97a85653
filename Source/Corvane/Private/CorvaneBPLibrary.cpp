#include "CorvaneBPLibrary.h"

#include "Completion/RunningRequests.h"
#include "CorvaneRequestCompleteObject.h"
#include "Downloads/DownloadTargets.h"
#include "Files/ByteToFileThread.h"
#include "Misc/ScopeLock.h"
#include "UObject/UObjectGlobals.h"
#include "Uploads/TruncateUploadedFileThread.h"
#include "Uploads/UploadFiles.h"

UCorvaneBPLibrary* UCorvaneBPLibrary::corv = nullptr;

UCorvaneBPLibrary::UCorvaneBPLibrary(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
	, runningList(new FCorvRunningRequests())
	, downloadTargets(new FCorvDownloadTargets())
	, uploadFiles(new FCorvUploadFiles())
{
	corv = this;
	fillMimeTypeMap();
	onhttpRequestCompleteDelegate.AddUniqueDynamic(this, &UCorvaneBPLibrary::httpRequestCompleteDelegate);
}

UCorvaneBPLibrary::~UCorvaneBPLibrary()
{
	delete byteToFileThread;
	delete truncateThread;
	delete uploadFiles;
	delete downloadTargets;
	delete runningList;
}

UCorvaneBPLibrary* UCorvaneBPLibrary::getCorvaneTarget()
{
	// The pointer is never cleared, so ask whether what it names still is the library of this process.
	return GetMutableDefault<UCorvaneBPLibrary>() ? corv : nullptr;
}

void UCorvaneBPLibrary::executeHttpRequests(TArray<FhttpRequest> InHttpRequests, UCorvaneBPLibrary*& OutCorvaneTarget)
{
	OutCorvaneTarget = getCorvaneTarget();
	if (!OutCorvaneTarget)
	{
		UE_LOG(LogTemp, Error, TEXT("UCorvaneBPLibrary (executeHttpRequests): The library does not exist."));
		return;
	}
	OutCorvaneTarget->startRequests(InHttpRequests);
}

void UCorvaneBPLibrary::httpRequestCompleteDelegate(
	const FString, const TArray<FString>&, const TArray<FString>&, int32, const TArray<uint8>&, const FString InRequestID)
{
	FScopeLock Lock(&mapLock);
	cancelledRequests.Remove(InRequestID);
	runningRequests.Remove(InRequestID);
}

void UCorvaneBPLibrary::httpRequestCompleteGoogleInfoDelegate(const FString, int64, int32, const FString, const FString) {}

void UCorvaneBPLibrary::httpFileDownloadDelegate(float, float, float, float, const FString) {}

void UCorvaneBPLibrary::httpFileUploadDelegate(float, int32, float, const FString) {}

void UCorvaneBPLibrary::httpServerSendEventDelegate(const FString, const FString) {}

bool UCorvaneBPLibrary::hasPendingWork()
{
	UCorvaneBPLibrary* Library = getCorvaneTarget();
	if (!Library)
	{
		return false;
	}
	FScopeLock Lock(&Library->mapLock);
	return !Library->runningList->isEmpty() || (Library->byteToFileThread && Library->byteToFileThread->hasWork()) ||
		   (Library->truncateThread && Library->truncateThread->hasWork());
}

void UCorvaneBPLibrary::shutDown()
{
	constexpr double longestWaitSeconds = 5;
	isShuttingDown = true;
	runningList->cancelAll();
	if (!runningList->waitUntilEmpty(longestWaitSeconds))
	{
		for (UCorvaneRequestCompleteObject* Object : runningList->remainingObjects())
		{
			Object->stopWorker();
		}
	}
	FByteToFileThread* Writer = nullptr;
	{
		FScopeLock Lock(&mapLock);
		Writer = byteToFileThread;
		byteToFileThread = nullptr;
	}
	delete Writer; // finishes the queued writes
	endUploads();
}
