#pragma once

#include "CoreMinimal.h"

/** Where the bytes of a part file come from, as far as an answer told it. */
struct FCorvaneSourceFacts
{
	/** What was asked for, without user and password. */
	FString Address;
	/** As the server wrote it; empty = it did not. */
	FString ETag;
	/** As the server wrote it; empty = it did not. */
	FString LastModified;
	/** Bytes of the whole file; -1 = unknown. */
	int64 Total = -1;
};

/** The first bytes of a file, known again by their number and by the hash of the last ones of them. */
struct FCorvaneFileStart
{
	int64 Length = 0;
	/** SHA-256 of the last 64 KiB, or of all when there are fewer bytes. */
	FString TailHash;
};

/**
 * What the journal of a download tells, in the form of CorvaneJournalLines:
 *
 *     source 1 ADDRESS ETAG LAST-MODIFIED TOTAL    the part file is begun anew; 1 is the version of this format
 *     kept LENGTH TAIL-HASH                        so many bytes of it are on disk
 *     whole LENGTH TAIL-HASH differs|alike         it is checked, and about to take the place of the target, which is not or
 *                                                  might be the same file already
 *
 * The last "source" begins what counts.
 */
struct FCorvaneJournal
{
	/** Whether there is a source; without one nothing else counts. */
	bool bHasSource = false;
	FCorvaneSourceFacts Source;
	/** What of the part file is on disk for sure. */
	FCorvaneFileStart Kept;
	/** The part file was whole, and may stand under the target's name by now. */
	bool bWhole = false;
	/** The target was another file then, so that size and last bytes tell whether it has been replaced. */
	bool bToldApart = false;
	/** Bytes of the journal up to the end of its last good line. */
	int64 ValidBytes = 0;

	/** @param Bytes  whatever stands in the file. */
	static FCorvaneJournal Read(const TArray<uint8>& Bytes);

	/** @return lines ready to be added. */
	static TArray<uint8> SourceLine(const FCorvaneSourceFacts& Source);
	static TArray<uint8> KeptLine(const FCorvaneFileStart& Kept);
	static TArray<uint8> WholeLine(const FCorvaneFileStart& Whole, bool bToldApart);
};
