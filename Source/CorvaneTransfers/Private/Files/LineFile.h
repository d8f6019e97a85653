#pragma once

#include "CoreMinimal.h"
#include "Files/FileResult.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "Templates/Function.h"

/**
 * A file of lines that are only ever added: a journal on disk. As long as it is open nobody else can open it: it is the lock of
 * the transfer, and the last of its files to go. Thread: one at a time.
 */
class FCorvaneLineFile
{
public:
	/**
	 * Opens or makes it.
	 * @param Read  gets what stands in it. @return bytes up to the end of the last good line; the next one is written there.
	 * @return a failure also when another program has it open.
	 */
	FCorvaneFileResult Open(const FString& InPath, const TFunction<int64(const TArray<uint8>&)>& Read);
	/** @return what stands in one that may be open elsewhere; nothing when it cannot be read. */
	static TArray<uint8> ReadLines(const FString& InPath);

	bool IsOpen() const { return Handle.IsValid(); }

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
	int64 GoodBytes = 0;
	bool bIsEmpty = false;
};
