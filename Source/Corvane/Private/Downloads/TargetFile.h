#pragma once

#include "Downloads/DownloadTargets.h"
#include "Interfaces/IHttpResponse.h"
#include "Runs/Delivery.h"

class FCorvRun;

/**
 * The file that a download writes: who may write it, which version of the server's file is in it, and what the log is told
 * when it stays incomplete. Request worker, unless a function says otherwise.
 */
class FCorvTargetFile
{
public:
	explicit FCorvTargetFile(FCorvRun& run);

	/** Full path; empty for requests that write no file. Set before the start. */
	FString path;

	/** The run that begins a download takes the file over from whichever had it. Thread: game thread. */
	void claim();
	/** Makes this a later step of the download that has claimed the file. Thread: game thread. */
	void inherit(int64 download) { inheritedDownload = download; }
	/** @return the number of the download. */
	int64 download() const;
	/** The download has ended. */
	void release();
	/** @return the permission to write, for as long as it is held, if it was granted. */
	FCorvDownloadPermission askToWrite();

	/** @return bytes, 0 when there is no file. */
	int64 size() const;
	/**
	 * Puts the body of an answer after the bytes of the file, or in their place, and remembers its version.
	 * @return false, with a line in the log, when not every byte reached the disk; what did stays there.
	 */
	bool write(const IHttpResponse& response, bool bReplace);

	/** Whether an answer is of the version that the bytes on disk were taken from, as far as this program has seen that. */
	bool isOfKeptVersion(const IHttpResponse& response) const;
	/** Whether an answer names another version: the milder question, for one that was asked for by its version. */
	bool isOfOtherVersion(const IHttpResponse& response) const;
	/** The file is complete. */
	void forgetVersion();

	/** Tells the log why the file is not complete. */
	void tellIncomplete(const FString& reason) const;
	/** Tells it why nothing is written to one that may well be complete. */
	void tellLeftAlone(const FString& reason) const;
	/** The same, and the result that comes of it. */
	FCorvCompletion failure(const FString& reason) const;

private:
	FCorvDownloadTargets& targets() const;

	FCorvRun& run;
	int64 inheritedDownload = 0; // 0 = this run begins its download
};
