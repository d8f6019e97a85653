#pragma once

#include "CoreMinimal.h"

/** What a Content-Range header says. */
struct FCorvContentRange
{
	int64 first = -1; // -1 = not told
	int64 last = -1;
	int64 total = 0; // bytes of the whole file, 0 = unknown
};

/** An answer to a download, as far as it decides what becomes of the file. */
struct FCorvDownloadAnswer
{
	int32 statusCode = 0;
	FCorvContentRange range;
	int64 bodyBytes = 0;
};

/** The file of a download at the moment of writing. */
struct FCorvDownloadTarget
{
	int64 start = 0; // first byte that was asked for
	int64 size = 0; // bytes on disk, 0 when there is no file
	bool bOwnRange = false; // the script has set a Range header of its own
};

/** What a download does with a body. */
enum class ECorvDownloadAction : uint8
{
	Nothing, // the answer brings no part of the file, and says so itself
	Complete, // the file is on disk already
	Append,
	Replace, // the body is the whole file, though a part was asked for
	Refuse // the body does not belong after what is on disk
};

/** How downloads ask for parts of a file and what they make of the answers. Sizes and positions are bytes. */
namespace CorvaneRules
{
	/** Reads "bytes 0-99/1000"; what is not a decimal number counts as not told. */
	FCorvContentRange contentRange(const FString& value);

	/** @return the Range value that asks for everything from start on. */
	FString rangeFrom(int64 start);
	/** @return the Range value of a step: its ends are both included, and it is open when it would pass the file's end. */
	FString stepRange(int64 start, int64 stepSize, int64 fullSize);

	/** @return the most bytes that an honest answer to a step has; of the question for the size, one step. */
	int64 mostStepBytes(int64 start, int64 stepSize, int64 fullSize);

	/** @return what tells one version of a file from the next: the entity tag unless it is weak, else the date. */
	FString versionOf(const FString& eTag, const FString& lastModified);
	/**
	 * Whether two of these name different versions. What is not told, or is told in another way, contradicts nothing: an answer to
	 * If-Range need not repeat what it was asked about.
	 */
	bool areOtherVersions(const FString& one, const FString& other);

	/** Whether a part of a file, of so many bytes, follows the bytes that are on disk and does not pass its own bounds. */
	bool followsOnDisk(const FCorvContentRange& range, int64 sizeOnDisk, int64 bodyBytes);

	/**
	 * Whether a file is what an answer told of it, now that the answer's body is in it: of the total size, and all that the
	 * answer's range promised. An answer that tells neither is believed.
	 */
	bool isAsTold(const FCorvDownloadAnswer& answer, int64 sizeOnDisk);

	/** @return the size that the file has to have by what an answer told: the total, else the end of its range. */
	int64 toldSize(const FCorvDownloadAnswer& answer);

	/** What becomes of the body of a whole answer. */
	ECorvDownloadAction planDownload(const FCorvDownloadAnswer& answer, const FCorvDownloadTarget& target);
	/** Whether the bytes of an answer that broke off, or was cancelled, go after those on disk. */
	bool areReceivedBytesKept(const FCorvDownloadAnswer& answer, const FCorvDownloadTarget& target);

	/** Whether the answer to a step may be put after what is on disk: nothing but the part asked for. */
	bool isStep(const FCorvDownloadAnswer& answer, const FCorvDownloadTarget& target);

	/** @return the step size of a script, or the default when it is below 1; 2^30 at most. */
	int64 usableStepSize(int32 stepSize);
} // namespace CorvaneRules
