#include "Uploads/UploadFiles.h"

#include "Misc/ScopeLock.h"

void FCorvUploadFiles::begin(FhttpRequest Record)
{
	Record.setRequestCompleteObject(nullptr); // it belongs to the game thread
	FScopeLock Lock(&lock);
	running.Add(Record);
}

void FCorvUploadFiles::forget(const FString& Path)
{
	FScopeLock Lock(&lock);
	removeRunning(Path);
}

void FCorvUploadFiles::waitForRepair(const FString& Path)
{
	FScopeLock Lock(&lock);
	removeRunning(Path);
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
	return indexOfRunning(Path) != INDEX_NONE || blockedFiles.Contains(Path);
}

TArray<FString> FCorvUploadFiles::paths() const
{
	FScopeLock Lock(&lock);
	TArray<FString> Paths = blockedFiles;
	for (const FhttpRequest& Record : running)
	{
		Paths.Add(Record.filePath);
	}
	return Paths;
}

TArray<FhttpRequest> FCorvUploadFiles::unfinished() const
{
	FScopeLock Lock(&lock);
	return running;
}

int32 FCorvUploadFiles::indexOfRunning(const FString& Path) const
{
	int32 Index = running.Num() - 1;
	while (Index >= 0 && !running[Index].filePath.Equals(Path))
	{
		--Index;
	}
	return Index; // INDEX_NONE is -1
}

void FCorvUploadFiles::removeRunning(const FString& Path)
{
	const int32 Index = indexOfRunning(Path);
	if (Index != INDEX_NONE)
	{
		running.RemoveAt(Index);
	}
}
