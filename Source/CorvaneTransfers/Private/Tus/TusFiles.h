#pragma once

#include "CoreMinimal.h"
#include "Files/FileHash.h"
#include "Files/LineFile.h"
#include "Files/SentFile.h"
#include "Files/TargetClaims.h"
#include "Templates/Function.h"
#include "Templates/SharedPointer.h"
#include "Threads/Strand.h"
#include "Tus/TusJournal.h"

#include <atomic>

/** What was found of the file and of its journal. */
struct FCorvaneTusFound
{
	FCorvaneFileResult Result;
	FCorvaneSentFile File;
	/** In hexadecimal digits, if it was asked for. */
	FString Hash;
	/** Without an address: there is none to go on with. */
	FCorvaneTusUpload Upload;
	/** Why an upload that the journal tells of is of no use; empty = it is, or there was none. */
	FString WhyFromStart;
};

/**
 * The file work of one resumable upload but for what is sent. Every step is queued and done on a background thread, one after
 * another; what comes of it is told there. Hold it by a shared pointer; queued steps do so, too. Thread: any.
 */
class FCorvaneTusFiles : public TSharedFromThis<FCorvaneTusFiles>
{
public:
	struct FWish
	{
		/** Where the upload is begun. */
		FString Address;
		FString Path;
		FCorvaneHashWish Hash;
		/** Of the journal; empty = the usual one. */
		FString Folder;
		bool bResume = true;
	};

	/** @param Wanted  empty = the usual one. @return where journals stand. */
	static FString JournalFolder(const FString& Wanted);

	void Open(const FWish& Wish, TUniqueFunction<void(const FCorvaneTusFound&)> Tell);
	/** Notes an upload that the server has begun. */
	void Begin(const FCorvaneTusUpload& Upload, TUniqueFunction<void(const FCorvaneFileResult&)> Tell);
	/** Notes how far the server is. A note that fails costs nothing but a look at the file's content at the next start. */
	void Keep(const FCorvaneTusUpload& Upload, int64 Offset);
	/** Sums up a range of the file. Tells an empty text when it cannot be read. */
	void Sum(int64 Start, int64 Bytes, ECorvaneHashKind Kind, TUniqueFunction<void(const FString&)> Tell);
	/** An Open that reads the whole file ends with Cancelled, for good. */
	void StopReading() { bStopReading = true; }
	void Close(TUniqueFunction<void()> Tell);
	void Discard(TUniqueFunction<void()> Tell);

private:
	void Do(TUniqueFunction<void(FCorvaneTusFiles&)> Step);
	FCorvaneFileResult Find(const FWish& Wish, FCorvaneTusFound& Found);
	FCorvaneFileResult OpenJournal(const FWish& Wish);
	void Resume(FCorvaneTusFound& Found) const;

	const TSharedRef<FCorvaneStrand> Strand = MakeShared<FCorvaneStrand>();
	std::atomic<bool> bStopReading{false};

	// On the strand:
	FCorvaneSentFile File;
	FString Endpoint;
	FCorvaneTargetClaim Claim;
	FCorvaneLineFile Lines;
	FCorvaneTusJournal Journal; // as it was when it was opened
};
