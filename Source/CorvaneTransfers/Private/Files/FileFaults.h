#pragma once

#include "CoreMinimal.h"
#include "Files/FileResult.h"

/** Finds out, and says to people, why something cannot be written or read. Thread: any. */
namespace CorvaneFileFaults
{
	FCorvaneFileResult Failed(ECorvaneTransferOutcome Outcome, const FString& Sentence);

	/** @return a failure when a folder stands under that name. */
	FCorvaneFileResult FolderInTheWay(const FString& File);

	/** @return a failure when no other file can take the place of this one, which may be missing. */
	FCorvaneFileResult CannotBeReplaced(const FString& File);

	FCorvaneFileResult CannotRead(const FString& File);

	/** @param File  is not what it was when it was found; one that has gone can only not be read. */
	FCorvaneFileResult ChangedWhileSent(const FString& File);

	/** @param File  could not be opened for writing. */
	FCorvaneFileResult OpenFailed(const FString& File);

	/** @param File  did not take so many more bytes, or did not reach the disk with them. */
	FCorvaneFileResult WriteFailed(const FString& File, int64 Bytes);

	/** @return a failure when the disk has less room than that. @param Folder  is there. */
	FCorvaneFileResult NotEnoughRoom(const FString& Folder, int64 Bytes);
} // namespace CorvaneFileFaults
