#pragma once

#include "CorvaneBPLibrary.h"

/** A file that is to be uploaded, as it is described to the server. */
struct FCorvUploadFile
{
	FString path; // full, spelled as on disk
	FString name; // with its extension, without directories
	FString extension; // without the dot
	FString mimeType;
};

/** Steps that the kinds of uploads have in common. Thread: game thread. */
namespace CorvaneUpload
{
	/**
	 * Finds a file and describes it.
	 * @return false, with the reason in the log, when it does not exist or when its end is not its own, because
	 * another upload has made it longer.
	 */
	bool find(UCorvaneBPLibrary& library, EHTTPCorvFileUpload directoryType, const FString& path, FCorvUploadFile& file);

	/** @param path  spelled as on disk. @return false, with the reason in the log, when an upload has made the file longer. */
	bool hasOwnEnd(const UCorvaneBPLibrary& library, const FString& path);

	/** A full path spelled as on disk. Thread: any. */
	FString onDisk(const FString& path);

	/** The full path that a script means. Thread: any. */
	FString fullPath(EHTTPCorvFileUpload directoryType, const FString& path);

	void logUnreadable(const FString& path);
	/** For a file that could not be opened, or must not be while another upload uses it. */
	void logStillOpen(const FString& path);
} // namespace CorvaneUpload
