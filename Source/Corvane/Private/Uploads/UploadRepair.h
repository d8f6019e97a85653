#pragma once

#include "CorvaneBPLibrary.h"

/** How a file becomes again what it was before its upload. Thread: any. */
namespace CorvaneUpload
{
	/**
	 * Cuts the file of a stream multipart upload back, or deletes the copy. The outcome goes to the log; a file that cannot
	 * be opened is left without a word. A file that does not end exactly as the upload left it has been written meanwhile
	 * and stays as it is, and so does whatever a record names that is not a copy.
	 */
	void repair(const FhttpRequest& record);

	/** Cuts a file and logs the outcome; nothing happens when it cannot be opened. Never makes a file longer. */
	void truncateAndLog(const FString& path, int64 size);

	void logTruncation(bool bDone, const FString& path);

	/** Takes away what an append that failed may have left after the first size bytes. */
	void cutBack(const FString& path, int64 size);
} // namespace CorvaneUpload
