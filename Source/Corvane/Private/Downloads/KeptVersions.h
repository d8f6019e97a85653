#pragma once

#include "CoreMinimal.h"
#include "Corvane.h"
#include "HAL/CriticalSection.h"

/**
 * Which version of a file on a server the bytes belong to that an unfinished download has left on disk, for as long as the
 * program runs; the latest 1000, so that a program that never ends does not grow by them. Paths are full ones and compared as the file system compares them. Thread: any.
 */
class FCorvKeptVersions
{
public:
	/** @param size  bytes on disk. @param version  an entity tag or a date; an empty one is forgotten, and so is that of no bytes. */
	void remember(const FString& path, int64 size, const FString& version);
	void forget(const FString& path) { remember(path, 0, FString()); }
	/** @return the version; empty when it is not known, or the file has another size than it had. */
	FString find(const FString& path, int64 size);

private:
	struct FKept
	{
		FString path;
		int64 size = 0;
		FString version;
	};

	FCriticalSection lock;
	TArray<FKept> all CORVANE_GUARDED_BY(lock);
};
