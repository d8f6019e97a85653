#include "Uploads/UploadFiles.h"

#include "Misc/ScopeLock.h"

void FCorvUploadFiles::begin(FhttpRequest Record)
{
	Record.setRequestCompleteObject(nullptr); // it belongs to the game thread
	FScopeLock Lock(&lock);
	running.Add(Record.filePath, Record);
}

void FCorvUploadFiles::forget(const FString& Path)
{
	FScopeLock Lock(&lock);
	running.Remove(Path);
}

void FCorvUploadFiles::waitForRepair(const FString& Path)
{
	FScopeLock Lock(&lock);
	running.Remove(Path);
	blockedFiles.Add(Path);
}

void FCorvUploadFiles::endRepair(const FString& Path)
{
	FScopeLock Lock(&lock);
	blockedFiles.RemoveSingle(Path);
}

bool FCorvUploadFiles::isWaitingForRepair(const FString& Path) const
{
	FScopeLock Lock(&lock);
	return blockedFiles.Contains(Path);
}

bool FCorvUploadFiles::isChanged(const FString& Path) const
{
	FScopeLock Lock(&lock);
	return running.Contains(Path) || blockedFiles.Contains(Path);
}

TArray<FhttpRequest> FCorvUploadFiles::unfinished() const
{
	TArray<FhttpRequest> Records;
	FScopeLock Lock(&lock);
	for (const TPair<FString, FhttpRequest>& Upload : running)
	{
		Records.Add(Upload.Value);
	}
	return Records;
}
