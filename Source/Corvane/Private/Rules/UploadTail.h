#pragma once

#include "CorvaneBPLibrary.h"

/** What a stream multipart upload leaves on disk, and how it is recognised later. */
namespace CorvaneRules
{
	/** The most bytes at the end of a file that have to be looked at. */
	constexpr int32 longestUploadTail = 47;

	/**
	 * The size that a file had before its upload.
	 * @param tail, number  the last bytes of the file, longestUploadTail of them or the whole of a shorter file.
	 * @param fileSize  bytes of the whole file.
	 * @return -1 when the file does not end with such a tail. The tail holds 32 bits only: what they leave open above
	 * 2 GiB is taken from the size of the file, and when the two do not agree there, nothing was found.
	 */
	int64 sizeBeforeUpload(const uint8* tail, int32 number, int64 fileSize);

	/**
	 * Whether a file is, byte for byte, what an upload makes of it: its content and the tail that names the size of that.
	 * The parameters are those of sizeBeforeUpload.
	 */
	bool endsInOwnTail(const uint8* tail, int32 number, int64 fileSize);

	/**
	 * Where the copy of an upload file goes: beside it, under a name that tells it from a user's file.
	 * @param path  full path; every occurrence of its file name is replaced, whatever the case, those in directories too.
	 */
	FString uploadCopyPath(const FString& path, const FString& guid);

	/** Whether a file name, without directories, is one that uploadCopyPath gives to copies of the file at the path. */
	bool isUploadCopyOf(const FString& name, const FString& path);

	/**
	 * Whether an upload of this record has changed a file: the record names a file that was made longer, or a copy. A copy
	 * must bear the name of one, since the record names the user's own file until the copy is made.
	 */
	bool needsRepair(const FhttpRequest& record);

	/**
	 * Whether the body of a record's request begins in its Content-Length header, which has to be the last one then: an
	 * earlier one would keep its place.
	 */
	bool bodyBeginsInContentLength(const FhttpRequest& record);
} // namespace CorvaneRules
