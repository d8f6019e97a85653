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
TWeakObjectPtr<UCorvaneBPLibrary> UCorvaneBPLibrary::corvHandle;

UCorvaneBPLibrary::UCorvaneBPLibrary(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
	, runningList(new FCorvRunningRequests())
	, downloadTargets(new FCorvDownloadTargets())
	, uploadFiles(new FCorvUploadFiles())
{
	corv = this;
	corvHandle = this;
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
	return corvHandle.Get();
}

TArray<UCorvaneBPLibrary*> UCorvaneBPLibrary::libraries()
{
	TArray<UCorvaneBPLibrary*> Libraries;
	for (UCorvaneBPLibrary* Library : {getCorvaneTarget(), GetMutableDefault<UCorvaneBPLibrary>()})
	{
		if (Library && !Libraries.Contains(Library))
		{
			Libraries.Add(Library);
		}
	}
	return Libraries;
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
	for (UCorvaneBPLibrary* Library : libraries())
	{
		FScopeLock Lock(&Library->mapLock);
		if (!Library->runningList->isEmpty() || (Library->byteToFileThread && Library->byteToFileThread->hasWork()) ||
			(Library->truncateThread && Library->truncateThread->hasWork()))
		{
			return true;
		}
	}
	return false;
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
