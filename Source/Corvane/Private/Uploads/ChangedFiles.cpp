#include "Uploads/ChangedFiles.h"

#include "Misc/ScopeLock.h"

void FCorvChangedFiles::begin(FhttpRequest Record)
{
	Record.setRequestCompleteObject(nullptr); // it belongs to the game thread
	FScopeLock Lock(&lock);
	running.Add(Record);
}

void FCorvChangedFiles::forget(const FString& Path)
{
	FScopeLock Lock(&lock);
	removeRunning(Path);
}

void FCorvChangedFiles::waitForRepair(const FString& Path)
{
	FScopeLock Lock(&lock);
	removeRunning(Path);
	blockedFiles.Add(Path);
}

void FCorvChangedFiles::endRepair(const FString& Path)
{
	FScopeLock Lock(&lock);
	blockedFiles.RemoveSingle(Path);
}

bool FCorvChangedFiles::isWaitingForRepair(const FString& Path) const
{
	FScopeLock Lock(&lock);
	return blockedFiles.Contains(Path);
}

bool FCorvChangedFiles::isChanged(const FString& Path) const
{
	FScopeLock Lock(&lock);
	return indexOfRunning(Path) != INDEX_NONE || blockedFiles.Contains(Path);
}

TArray<FString> FCorvChangedFiles::paths() const
{
	FScopeLock Lock(&lock);
	TArray<FString> Paths = blockedFiles;
	for (const FhttpRequest& Record : running)
	{
		Paths.Add(Record.filePath);
	}
	return Paths;
}

TArray<FhttpRequest> FCorvChangedFiles::unfinished() const
{
	FScopeLock Lock(&lock);
	return running;
}

int32 FCorvChangedFiles::indexOfRunning(const FString& Path) const
{
	int32 Index = running.Num() - 1;
	while (Index >= 0 && !running[Index].filePath.Equals(Path))
	{
		--Index;
	}
	return Index; // INDEX_NONE is -1
}

void FCorvChangedFiles::removeRunning(const FString& Path)
{
	const int32 Index = indexOfRunning(Path);
	if (Index != INDEX_NONE)
	{
		running.RemoveAt(Index);
	}
}
