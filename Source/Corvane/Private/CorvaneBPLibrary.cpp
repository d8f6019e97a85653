#include "CorvaneBPLibrary.h"

#include "CorvaneRequestCompleteObject.h"
#include "Downloads/DownloadTargets.h"
#include "Files/ByteToFileThread.h"
#include "Misc/ScopeLock.h"
#include "Runs/Run.h"
#include "Runs/RunList.h"
#include "UObject/UObjectGlobals.h"
#include "Uploads/ChangedFiles.h"
#include "Uploads/TruncateUploadedFileThread.h"

UCorvaneBPLibrary* UCorvaneBPLibrary::corv = nullptr;
TWeakObjectPtr<UCorvaneBPLibrary> UCorvaneBPLibrary::corvHandle;

namespace CorvaneLibrary
{
	/** Every library object that was ever made and may still be there. Thread: any. */
	struct FInstances
	{
		FCriticalSection lock;
		TArray<TWeakObjectPtr<UCorvaneBPLibrary>> all CORVANE_GUARDED_BY(lock);
	};

	static FInstances& instances()
	{
		static FInstances Instances;
		return Instances;
	}

	static void remember(UCorvaneBPLibrary* Library)
	{
		FInstances& Instances = instances();
		FScopeLock Lock(&Instances.lock);
		for (int32 Index = Instances.all.Num() - 1; Index >= 0; --Index)
		{
			if (!Instances.all[Index].IsValid())
			{
				Instances.all.RemoveAt(Index);
			}
		}
		Instances.all.Add(Library);
	}
} // namespace CorvaneLibrary

UCorvaneBPLibrary::UCorvaneBPLibrary(const FObjectInitializer& ObjectInitializer)
	: Super(ObjectInitializer)
	, runs(MakeShared<FCorvRunList>())
	, downloadTargets(MakeShared<FCorvDownloadTargets>())
	, changedFiles(MakeShared<FCorvChangedFiles>())
{
	corv = this;
	corvHandle = this;
	CorvaneLibrary::remember(this);
	fillMimeTypeMap();
	onhttpRequestCompleteDelegate.AddUniqueDynamic(this, &UCorvaneBPLibrary::httpRequestCompleteDelegate);
}

UCorvaneBPLibrary::~UCorvaneBPLibrary() = default;

UCorvaneBPLibrary* UCorvaneBPLibrary::getCorvaneTarget()
{
	return corvHandle.Get();
}

TArray<UCorvaneBPLibrary*> UCorvaneBPLibrary::libraries()
{
	TArray<UCorvaneBPLibrary*> Libraries;
	CorvaneLibrary::FInstances& Instances = CorvaneLibrary::instances();
	FScopeLock Lock(&Instances.lock);
	for (const TWeakObjectPtr<UCorvaneBPLibrary>& Instance : Instances.all)
	{
		if (UCorvaneBPLibrary* Library = Instance.Get())
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
	}
	startAll(InHttpRequests);
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
		if (Library->hasWork())
		{
			return true;
		}
	}
	return false;
}

bool UCorvaneBPLibrary::hasWork()
{
	FScopeLock Lock(&mapLock);
	const TSharedPtr<FByteToFileThread> Writer = byteToFileThread;
	const TSharedPtr<FCorvTruncateUploadedFileThread> Repair = truncateThread;
	return !runs->isEmpty() || (Writer && Writer->hasWork()) || (Repair && Repair->hasWork());
}

TArray<FString> UCorvaneBPLibrary::filesOfRunningDownloads()
{
	TArray<FString> Files;
	for (const UCorvaneBPLibrary* Library : libraries())
	{
		Files.Append(Library->downloadTargets->claimed());
	}
	return Files;
}

void UCorvaneBPLibrary::shutDown()
{
	constexpr double longestWaitSeconds = 5;
	isShuttingDown = true;
	runs->cancelAll();
	if (!runs->waitUntilEmpty(longestWaitSeconds))
	{
		for (UCorvaneRequestCompleteObject* Object : runs->remainingObjects())
		{
			Object->run().stopWorker();
		}
	}
	endWrites();
	endUploads();
}

void UCorvaneBPLibrary::endWrites()
{
	TSharedPtr<FByteToFileThread> Writer; // finishes the queued writes when it goes, outside the lock
	FScopeLock Lock(&mapLock);
	Writer = MoveTemp(byteToFileThread);
}
