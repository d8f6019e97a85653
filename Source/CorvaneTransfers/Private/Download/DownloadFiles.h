#pragma once

#include "CoreMinimal.h"
#include "Files/PartFile.h"
#include "Misc/DateTime.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/ByteBuffer.h"
#include "Threads/Strand.h"

/** What one try has done to the part file. */
struct FCorvaneAttemptFiles
{
	FCorvaneFileResult Result;
	/** Bytes in the part file now. */
	int64 Length = 0;
	/** Bytes that the try has written into it. */
	int64 Written = 0;
};

/**
 * The file work of one download. Every step is queued and done on a background thread, one after another; what comes of it
 * is told there. Hold it by a shared pointer; queued steps do so, too. Thread: any, but for what says otherwise.
 */
class FCorvaneDownloadFiles : public TSharedFromThis<FCorvaneDownloadFiles>
{
public:
	/** Is told when writing fails, on a background thread: the server need not go on. Set it before anything else. */
	void WhenWritingFails(TUniqueFunction<void()> Tell) { TellFailure = MoveTemp(Tell); }

	/** Tells whether a file stands there, and when it was changed (UTC). Relative paths start at the base directory. */
	void Look(const FString& Target, TUniqueFunction<void(bool, FDateTime)> Tell);
	/** Tells how many bytes an open would find, and of how many (-1 = unknown). Nothing is open behind it. */
	void LookForRest(const FString& Target, const FString& Address, TUniqueFunction<void(int64, int64)> Tell);
	void Open(const FString& Target, const FString& Address, bool bResume, ECorvaneHashKind HashKind,
		TUniqueFunction<void(const FCorvaneOpenedPart&)> Tell);
	/** Vouches for what is there. What the disk does not take is there no longer: GetLength tells it to the next try. */
	void Secure();
	void Finish(const FCorvaneFinishWish& Wish, TUniqueFunction<void(const FCorvaneFinished&)> Tell);
	/** The same inside this call. Thread: that of the steps. */
	FCorvaneFinished FinishNow(const FCorvaneFinishWish& Wish);
	/** Tells how many bytes are kept. */
	void Close(TUniqueFunction<void(int64)> Tell);
	void Discard(TUniqueFunction<void()> Tell);

	/** Tells the last bytes on disk. @param Compare  how many of them. */
	void ReadTail(int64 Compare, TUniqueFunction<void(TArray<uint8>&&, const FCorvaneFileResult&)> Tell);
	/** Does something else when the steps before it are done. */
	void Then(TUniqueFunction<void()> Step) { Strand->Add(MoveTemp(Step)); }
	/** @return bytes in the part file now. Thread: that of the steps. */
	int64 GetLength() const { return Part.GetLength(); }
	/** Begins a try. Thread: that of the steps. */
	void BeginAttempt();
	/** The bytes that follow are the file from its beginning. */
	void StartOver(const FCorvaneSourceFacts& Source);
	/** Takes bytes of the body. A disk that is slow makes the caller wait. @return false when they cannot be written. */
	bool Put(const uint8* Bytes, int64 Number);
	/** Tells what came of the try when its last byte is in the file. */
	void EndAttempt(TUniqueFunction<void(const FCorvaneAttemptFiles&)> Tell);

	/** Ends a Finish that reads the whole file once more, for good. */
	void StopReading() { Part.StopReading(); }

	/** Whoever brings bytes waits for the disk no longer; bytes that have not reached it are lost. */
	void Abandon() { Buffer.Close(); }

private:
	/**
	 * @tparam StepType  is called with this object, on the strand. It is moved on the way, which what it captures by the name of a
	 * constant is not.
	 */
	template <class StepType>
	void Do(StepType Step)
	{
		Strand->Add([Self = AsShared(), Step = MoveTemp(Step)]() mutable { Step(*Self); });
	}
	void WriteWaiting();
	void GiveMemoryBack();
	void Note(const FCorvaneFileResult& Result);

	const TSharedRef<FCorvaneStrand> Strand = MakeShared<FCorvaneStrand>();
	TUniqueFunction<void()> TellFailure;
	FCorvaneByteBuffer Buffer;

	// On the strand:
	FCorvanePartFile Part;
	FCorvaneAttemptFiles Attempt;
	TArray<uint8> Writing; // keeps its memory
};
