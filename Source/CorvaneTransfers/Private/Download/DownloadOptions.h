#pragma once

#include "CoreMinimal.h"

/** What becomes of a file that stands where a download shall put its own. */
enum class ECorvaneIfTargetExists : uint8
{
	/** It is replaced, once the new one is whole. */
	Replace,
	/** It stays, and nothing is asked for: a success. */
	Keep,
	/** It stays, and the download is refused. */
	Fail,
	/** It is replaced if the server has a newer one; else it stays: a success. */
	OnlyIfNewer
};

/** How a file is downloaded. Times are seconds, sizes bytes. */
struct FCorvaneDownloadOptions
{
	/** Sent with every request. Range, If-Range, If-Modified-Since and Accept-Encoding are the download's own. */
	TMap<FString, FString> Headers;
	/** Tries in a row that bring no new byte, before it gives up. Those that bring one are not limited. */
	int32 Attempts = 5;
	/** Before the second try; it doubles with each failure, and a random share of it is waited. */
	double FirstWaitSeconds = 1;
	/** No single wait is longer. A server that wants a longer one (Retry-After) ends the download, which says so. */
	double LongestWaitSeconds = 60;
	/** Without a byte from the server, after which a try has failed. */
	double SilenceSeconds = 30;
	/** -1 = any. */
	int64 ExpectedSize = -1;
	/** "sha256:HEX" (or sha1, md5) to be compared, "sha256" alone to be told, empty = none. */
	FString Hash;
	/** 0 = no limit. See Pace.h for servers that send no parts. */
	int64 BytesPerSecond = 0;
	ECorvaneIfTargetExists IfTargetExists = ECorvaneIfTargetExists::Replace;
	/** The file gets the server's time of its last change. */
	bool bKeepServerTime = false;
	/** Goes on with what an earlier start has left on disk. */
	bool bResume = true;
};

namespace CorvaneDownload
{
	/**
	 * Looks at what a download is started with, and at nothing else. Thread: any.
	 * @param bHashIsReadable  whether Options.Hash is.
	 * @return what is wrong, as a sentence; empty = nothing.
	 */
	FString FindFault(const FString& URL, const FString& Target, const FCorvaneDownloadOptions& Options, bool bHashIsReadable);
} // namespace CorvaneDownload
