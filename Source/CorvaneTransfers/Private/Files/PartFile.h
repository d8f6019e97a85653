#pragma once

#include "CoreMinimal.h"
#include "Files/EarlyFlush.h"
#include "Files/FileHash.h"
#include "Files/FileResult.h"
#include "Files/HashOnTheWay.h"
#include "Files/Journal.h"
#include "Files/JournalFile.h"
#include "Files/TargetClaims.h"
#include "GenericPlatform/GenericPlatformFile.h"
#include "Misc/DateTime.h"

#include <atomic>

/** What stands on disk of a download that is about to begin. */
struct FCorvaneOpenedPart
{
	/** A failure: nothing is open, no byte that was vouched for is lost. */
	FCorvaneFileResult Result;
	/** Bytes to go on behind, now or after a failure; 0 = begin with StartOver. */
	int64 Length = 0;
	/** Where they come from; without a meaning when there are none. */
	FCorvaneSourceFacts Source;
	/** An earlier run was ended after all was done but telling so: the target is the file. Finish, or StartOver. */
	bool bWholeAlready = false;
	/** Why bytes on disk are of no use; empty when there are none, or they are. */
	FString WhyFromStart;

	/** @return whether it is open, and begins with its first byte. */
	bool IsNew() const { return Result.IsOk() && Length == 0 && !bWholeAlready; }
};

/** What is wanted when all bytes are there. */
struct FCorvaneFinishWish
{
	FCorvaneHashWish Hash;
	/** The time of change that the file gets, in UTC; MinValue = that of its last write. */
	FDateTime FileTime = FDateTime::MinValue();
	/** Whether a file that stands under the target's name by now is replaced. */
	bool bMayReplace = true;
};

struct FCorvaneFinished
{
	FCorvaneFileResult Result;
	/** Lower case hexadecimal; empty when none was asked for. */
	FString Hash;
	/** With a failure: bytes that a later Open finds. */
	int64 KeptBytes = 0;
};

/**
 * The bytes of one download until they are all there: "<target>.corvpart", with "<target>.corvjournal" beside it, which vouches for
 * what is on disk. The target itself is touched by Finish alone, which puts the whole file in its place. Ended at any moment,
 * also by a power cut, the next Open finds what was vouched for and drops the rest.
 *
 * Whoever has the journal open has the target for itself, in all programs; where there is none, whoever has the part file open. A
 * short file is there before there is anything to vouch for, and needs no journal: making and deleting a second file would take
 * longer than the download.
 *
 * A failed write takes nothing back that was vouched for. All file work happens inside the calls. Thread: one at a time.
 */
class FCorvanePartFile
{
public:
	~FCorvanePartFile() { Close(); }

	/**
	 * Takes the target, for this object alone, and looks at what is there. Makes missing folders.
	 * @param InTarget  where the file is to stand in the end; relative paths start at the base directory.
	 * @param Address  what will be asked for, without user and password: bytes of another address are of no use.
	 * @param bResume  false: whatever is there is of no use.
	 * @param InHashKind  what Finish will want: of a file that comes as a whole it is computed on the way.
	 */
	FCorvaneOpenedPart Open(
		const FString& InTarget, const FString& Address, bool bResume, ECorvaneHashKind InHashKind = ECorvaneHashKind::None);

	/** @return false when an Open would find no byte of a file, whatever its address. */
	static bool MayHaveBytes(const FString& InTarget);

	/** Begins with the first byte of a file. @param NewSource  what its answer tells; a total that the disk has no room for is a failure, and then nothing is changed. */
	FCorvaneFileResult StartOver(const FCorvaneSourceFacts& NewSource);

	/** Adds bytes at the end, and vouches for them now and then. */
	FCorvaneFileResult Append(const uint8* Bytes, int64 Count);

	/** Waits until the disk has all bytes, and vouches for them. What the disk does not take is cut off: GetLength tells what is left. */
	FCorvaneFileResult Checkpoint();

	/** @return bytes in the part file now. */
	int64 GetLength() const { return Length; }

	/** Reads the last bytes. @param Count  at most so many. */
	FCorvaneFileResult ReadTail(int64 Count, TArray<uint8>& Tail) const;

	/**
	 * Checks the whole file and puts it in the target's place. This object is closed behind it, whatever comes of it. Bytes of the
	 * wrong hash are deleted, unless they are the target already; any other failure leaves them for a later try.
	 */
	FCorvaneFinished Finish(const FCorvaneFinishWish& Wish);

	/** Finish reads the whole file no further, and ends with Cancelled then. Thread: any. */
	void StopReading() { bStopReading = true; }

	/**
	 * Vouches for all bytes and lets go of the files; they stay, unless there is nothing in them.
	 * @return bytes that are vouched for: a later Open finds so many.
	 */
	int64 Close();

	/** Deletes part file and journal and lets go of them; a target that is whole already stays. */
	void Discard();

private:
	FString PartName() const { return Target + TEXT(".corvpart"); }
	static FString JournalOf(const FString& File) { return File + TEXT(".corvjournal"); }
	FString JournalName() const { return JournalOf(Target); }
	FCorvaneFileResult TakeTarget(const FString& InTarget);
	FCorvaneFileResult LockTarget();
	FCorvaneFileResult LockByPart();
	FCorvaneFileResult NeedJournal(const FCorvaneSourceFacts& Facts);
	FCorvaneFileResult TellSource(const FCorvaneSourceFacts& NewSource);
	void Resume(const FString& Address, FCorvaneOpenedPart& Opened);
	bool HasTakenPlace() const;
	FString WhyUseless(const FString& Address, const FString& File) const;
	FCorvaneFileResult TakePart();
	FCorvaneFileResult OpenPart(int64 NewLength);
	bool Shorten(int64 NewLength);
	void ClosePart();
	bool IsEmptyRest() const;
	bool IsCheckpointDue() const;
	FCorvaneFileResult FlushPart();
	FCorvaneFileResult CheckSizeOnDisk() const;
	FCorvaneFileResult CheckSize();
	FCorvaneFileResult SecureBeforeFinish(const FCorvaneHashWish& Wish);
	FCorvaneFileResult CheckHash(const FString& File, const FCorvaneHashWish& Wish, FString& OutHash);
	bool HashOf(const FString& File, ECorvaneHashKind Kind, FString& OutHash);
	FCorvaneFileResult Replace(const FCorvaneFinishWish& Wish);
	FCorvaneFileResult VouchForWhole();
	FCorvaneFileResult PutInPlace(const FDateTime& FileTime);
	bool MoveWhileOpen(const FDateTime& FileTime);
	FCorvaneFileResult MoveClosed(const FDateTime& FileTime);
	void SetTime(const FDateTime& FileTime) const;
	void LetGo();

	FString Target; // a full path
	FCorvaneTargetClaim Claim;
	FCorvaneJournalFile Journal;
	TUniquePtr<IFileHandle> Part;
	bool bWholeAlready = false;
	FCorvaneSourceFacts Source; // of the bytes in the part file
	int64 Length = 0;
	int64 VouchedLength = 0;
	FCorvaneHashOnTheWay Hash;
	FCorvaneEarlyFlush EarlyFlush;
	FDateTime LastCheckpoint;
	std::atomic<bool> bStopReading{false};
};
