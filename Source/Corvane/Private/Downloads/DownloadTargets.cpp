#include "Downloads/DownloadTargets.h"

#include "Misc/Paths.h"
#include "Misc/ScopeLock.h"

void FCorvDownloadTargets::claim(const FString& Path, int64 Download)
{
	FScopeLock Lock(&lock);
	if (FTarget* Known = find(Path))
	{
		Known->download = Download;
	}
	else
	{
		targets.Add(FTarget{Path, Download});
	}
}

void FCorvDownloadTargets::release(const FString& Path, int64 Download)
{
	FScopeLock Lock(&lock);
	FTarget* Known = find(Path);
	if (Known && Known->download == Download)
	{
		Known->download = 0;
		removeIfUnused(Path);
	}
}

TArray<FString> FCorvDownloadTargets::claimed()
{
	TArray<FString> Paths;
	FScopeLock Lock(&lock);
	for (const FTarget& Target : targets)
	{
		if (Target.download != 0)
		{
			Paths.Add(Target.path);
		}
	}
	return Paths;
}

bool FCorvDownloadTargets::beginWriting(const FString& Path, int64 Download)
{
	FScopeLock Lock(&lock);
	FTarget* Known = find(Path);
	if (!Known || Known->download != Download || Known->bWriting)
	{
		return false;
	}
	Known->bWriting = true;
	return true;
}

void FCorvDownloadTargets::endWriting(const FString& Path)
{
	FScopeLock Lock(&lock);
	if (FTarget* Known = find(Path))
	{
		Known->bWriting = false;
		removeIfUnused(Path);
	}
}

FCorvDownloadTargets::FTarget* FCorvDownloadTargets::find(const FString& Path)
{
	for (FTarget& Target : targets)
	{
		if (FPaths::IsSamePath(Target.path, Path))
		{
			return &Target;
		}
	}
	return nullptr;
}

void FCorvDownloadTargets::removeIfUnused(const FString& Path)
{
	for (int32 Index = 0; Index < targets.Num(); ++Index)
	{
		if (FPaths::IsSamePath(targets[Index].path, Path) && targets[Index].download == 0 && !targets[Index].bWriting)
		{
			targets.RemoveAt(Index);
			return;
		}
	}
}
