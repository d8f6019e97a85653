#pragma once

#include "CoreMinimal.h"
#include "Files/FileResult.h"
#include "Files/Journal.h"
#include "GenericPlatform/GenericPlatformFile.h"

/**
 * The journal of one transfer on disk. As long as it is open nobody else can open it: it is the lock of the transfer, and the
 * last of its files to go. Thread: one at a time.
 */
class FCorvaneJournalFile
{
public:
	/** Opens or makes it, and reads what it tells. @return a failure also when another program has it open. */
	FCorvaneFileResult Open(const FString& InPath);
	/** @return what a journal tells that somebody else may have open; nothing when it cannot be read. */
	static FCorvaneJournal Peek(const FString& InPath);

	bool IsOpen() const { return Handle.IsValid(); }
	/** What it told when it was opened. */
	const FCorvaneJournal& Told() const { return Journal; }

	/** Adds a line behind the last good one; it has reached the disk when this returns. */
	FCorvaneFileResult Append(const TArray<uint8>& Line);

	/** The same for a line whose loss does no harm: it reaches the disk with the next one that must, or by itself. */
	FCorvaneFileResult AppendWithoutWaiting(const TArray<uint8>& Line);

	/** Waits until all lines have reached the disk. */
	FCorvaneFileResult Flush();

	/** Deletes the file and lets go of it. */
	void Delete();
	/** Lets go of the file; deletes it when there was none before and nothing was written. */
	void Close();

private:
	FString Path;
	TUniquePtr<IFileHandle> Handle;
	FCorvaneJournal Journal;
	int64 GoodBytes = 0;
	bool bIsEmpty = false;
};
