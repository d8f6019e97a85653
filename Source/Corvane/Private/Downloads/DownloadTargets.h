#pragma once

#include "CoreMinimal.h"
#include "Corvane.h"
#include "Downloads/KeptVersions.h"
#include "HAL/CriticalSection.h"

/**
 * Which download may write which file: the one that was started last. A download is known by a number that its follow-up
 * steps inherit. Paths are full ones and compared as the file system compares them. Thread: any.
 */
class FCorvDownloadTargets
{
public:
	/** A download starts, and takes the file over from whichever had it. */
	void claim(const FString& path, int64 download);
	/** A download has ended; does nothing when the file is another's by now. */
	void release(const FString& path, int64 download);
	/** @return the files of downloads that have not ended. */
	TArray<FString> claimed();

	/** Of the files that unfinished downloads have left. */
	FCorvKeptVersions keptVersions;

private:
	friend class FCorvDownloadPermission;

	struct FTarget
	{
		FString path;
		int64 download = 0; // 0 = nobody's any more
		bool bWriting = false;
	};

	bool beginWriting(const FString& path, int64 download);
	void endWriting(const FString& path);
	FTarget* find(const FString& path) CORVANE_REQUIRES(lock);
	void removeIfUnused(const FString& path) CORVANE_REQUIRES(lock);

	FCriticalSection lock;
	TArray<FTarget> targets CORVANE_GUARDED_BY(lock); // as many as downloads run
};

/**
 * The permission to write a download's file, held for the length of a block. Nobody else gets it meanwhile, so two bodies
 * never mix: the size that is read under it holds until the bytes follow it.
 */
class FCorvDownloadPermission
{
public:
	FCorvDownloadPermission(FCorvDownloadTargets& inTargets, const FString& inPath, int64 download)
		: targets(inTargets)
		, path(inPath)
		, bGranted(targets.beginWriting(path, download))
	{
	}
	~FCorvDownloadPermission()
	{
		if (bGranted)
		{
			targets.endWriting(path);
		}
	}
	FCorvDownloadPermission(const FCorvDownloadPermission&) = delete;
	FCorvDownloadPermission& operator=(const FCorvDownloadPermission&) = delete;

	/** False when the file is another download's by now, or somebody is writing it. */
	bool isGranted() const { return bGranted; }

private:
	FCorvDownloadTargets& targets;
	const FString path;
	const bool bGranted;
};
