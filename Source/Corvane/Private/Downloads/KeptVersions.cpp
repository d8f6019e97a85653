#include "Downloads/KeptVersions.h"

#include "Misc/Paths.h"
#include "Misc/ScopeLock.h"

void FCorvKeptVersions::remember(const FString& Path, int64 Size, const FString& Version)
{
	FScopeLock Lock(&lock);
	for (int32 Index = 0; Index < all.Num(); ++Index)
	{
		if (FPaths::IsSamePath(all[Index].path, Path))
		{
			all.RemoveAt(Index);
			break;
		}
	}
	constexpr int32 Most = 1000;
	if (!Version.IsEmpty() && Size > 0) // no bytes are of no version
	{
		if (all.Num() == Most)
		{
			all.RemoveAt(0);
		}
		all.Add(FKept{Path, Size, Version});
	}
}

FString FCorvKeptVersions::find(const FString& Path, int64 Size)
{
	FScopeLock Lock(&lock);
	for (const FKept& Kept : all)
	{
		if (FPaths::IsSamePath(Kept.path, Path) && Kept.size == Size)
		{
			return Kept.version;
		}
	}
	return FString();
}
