#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneTransferReport.h"
#include "CorvaneUploadOptions.h"
#include "Misc/DateTime.h"
#include "Upload/BodyEnd.h"

/** What the driver of an upload does next. It tells the machine what came of it by the function named here. */
enum class ECorvaneUploadAction : uint8
{
	/** Go on with what is being done. */
	None,
	/** Look for the files: OnFound. */
	Find,
	/** Start an exchange with the whole body: OnTryEnded. */
	Send,
	/** Cancel the exchange that runs; it ends through OnTryEnded. */
	Stop,
	/** Wait for WaitSeconds: OnWaitOver. Other calls may end the wait earlier. */
	Wait,
	/** Give out the report: the upload is over. Comes once. */
	Tell
};

struct FCorvaneUploadStep
{
	ECorvaneUploadAction Action = ECorvaneUploadAction::None;
	double WaitSeconds = 0;
};

/** What came of the look for the files. */
struct FCorvaneUploadFound
{
	FCorvaneFileResult Result;
	/** Of the whole body. */
	int64 TotalBytes = 0;
};

/** What came of one exchange. */
struct FCorvaneUploadTryEnd
{
	FCorvaneExchangeResult Exchange;
	FCorvaneBodyEnd Body;
	/** What the server said, up to the limit. */
	FString Answer;
	/** From 0 up to, but without, 1. */
	double Random = 0;
	FDateTime NowUtc = FDateTime::MinValue();
};

/**
 * One upload in one request, as a machine of values: it sees no file, no thread and no clock. It is told what happened and
 * says what to do; calls that do not fit what is going on change nothing. Every start ends in exactly one Tell.
 *
 * What is sent again: a PUT, which means the same however often it arrives; a POST only if none of its bytes was handed out, or
 * if the caller allows it. A pause holds back the next try and leaves the one that runs alone.
 *
 * Now is in seconds from any beginning. Sizes are bytes. Thread: one at a time.
 */
class FCorvaneUploadMachine
{
public:
	/** @param InVerb  PUT or POST. */
	FCorvaneUploadMachine(const FString& URL, const FString& InVerb, const FCorvaneUploadOptions& InOptions);

	/** @param Fault  what CorvaneUploadOptions::FindFault says. */
	FCorvaneUploadStep Start(double Now, const FString& Fault);
	FCorvaneUploadStep OnFound(double Now, const FCorvaneUploadFound& Found);
	FCorvaneUploadStep OnTryEnded(double Now, const FCorvaneUploadTryEnd& End);
	FCorvaneUploadStep OnWaitOver(double Now);

	FCorvaneUploadStep Pause(double Now);
	FCorvaneUploadStep Continue(double Now);
	/** Ends it with Cancelled; what the server has taken by then is a success all the same. */
	FCorvaneUploadStep Cancel(double Now) { return EndWith(Now, ECorvaneTransferOutcome::Cancelled); }
	/** The program ends: as Cancel, with Ended. */
	FCorvaneUploadStep EndOfProgram(double Now) { return EndWith(Now, ECorvaneTransferOutcome::Ended); }

	bool IsPaused() const { return Phase == EPhase::Paused; }
	bool IsOver() const { return Phase == EPhase::Over; }
	/** As it is so far; complete with Tell. */
	const FCorvaneTransferReport& GetReport() const { return Report; }

private:
	enum class EPhase : uint8
	{
		New,
		Finding,
		Sending,
		Waiting,
		Paused,
		Over
	};

	void MoveTo(EPhase Next, double Now);
	FCorvaneUploadStep Do(EPhase Next, double Now, ECorvaneUploadAction Action);
	FCorvaneUploadStep GoOn(double Now);
	FCorvaneUploadStep EndWith(double Now, ECorvaneTransferOutcome Outcome);
	FCorvaneUploadStep EndAsWanted(double Now);
	FCorvaneUploadStep Close(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence);

	void Count(const FCorvaneUploadTryEnd& End);
	FCorvaneUploadStep FollowAnswer(double Now, const FCorvaneUploadTryEnd& End);
	FCorvaneUploadStep FollowSuccess(double Now, const FCorvaneUploadTryEnd& End);
	FCorvaneUploadStep Succeed(double Now, const FCorvaneUploadTryEnd& End);
	FCorvaneUploadStep Retry(double Now, const FCorvaneUploadTryEnd& End, ECorvaneTransferOutcome Outcome, const FString& Reason);
	bool IsTaken(const FCorvaneUploadTryEnd& End) const;
	bool MayBeSentAgain(const FCorvaneExchangeResult& Exchange) const;

	const FCorvaneUploadOptions Options;
	const bool bIdempotent;
	FCorvaneTransferReport Report;

	EPhase Phase = EPhase::New;
	double PhaseBegan = 0;
	double NextTryAt = 0;
	bool bWantsPause = false;
	ECorvaneTransferOutcome WantedEnd = ECorvaneTransferOutcome::Running; // Running = none
};
