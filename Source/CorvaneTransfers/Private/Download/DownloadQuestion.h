#pragma once

#include "Attempts/Answer.h"
#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "Misc/DateTime.h"

/** What one try of a download asks for, and what it is asked on behalf of. Positions are bytes. */
struct FCorvaneDownloadQuestion
{
	/** Bytes on disk that the answer shall go on behind; 0 = the file from its beginning, whatever is on disk. */
	int64 OnDisk = 0;
	/** The last so many of them are asked for again, and compared before anything is appended. */
	int64 Compare = 0;
	/** Only a part is asked for: from OnDisk - Compare on. */
	bool bRange = false;
	/** Behind the last byte that is asked for; -1 = all that follow. */
	int64 Until = -1;
	/** The whole file's, as far as known; -1 = unknown. */
	int64 Total = -1;
	int64 ExpectedSize = -1;
	/** Of what is on disk, or was told before a first byte came. */
	FCorvaneVersion Version;
	/** UTC; a file that is not newer is not wanted, nor a rest of it. MinValue = any is. */
	FDateTime IfNewerThan = FDateTime::MinValue();

	int64 From() const { return OnDisk - Compare; }
	/** @return bytes that are asked for, those that are compared among them; 0 = any number. */
	int64 MostBytes() const { return Until < 0 ? 0 : Until - From(); }
};

namespace CorvaneDownload
{
	/** Bytes that are asked for again where nothing else tells whether the file is still the same. */
	constexpr int64 TailBytes = 64 * 1024;

	/**
	 * New bytes of a part that such a tail comes with: smaller ones would move the tail more often than the file, larger ones would
	 * come in a burst that a low limit is not meant to have.
	 */
	constexpr int64 PartBytesWithTail = 4 * TailBytes;

	/** @return the headers of a try. Thread: any. */
	TMap<FString, FString> MakeHeaders(const FCorvaneDownloadQuestion& Question, const FCorvaneDownloadOptions& Options);
} // namespace CorvaneDownload
