#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneResumableOptions.h"
#include "CorvaneTransferReport.h"
#include "Misc/DateTime.h"
#include "Tus/TusAnswer.h"
#include "Tus/TusJournal.h"
#include "Tus/TusOptions.h"

/** What the driver of a resumable upload does next. It tells the machine what came of it by the function named here. */
enum class ECorvaneTusAction : uint8
{
	/** Go on with what is being done. */
	None,
	/** Look at the file, lock the upload, and read its journal: OnOpened. */
	Open,
	/** Ask the server to begin an upload, with the step's bytes of the file if there are any: OnExchangeEnded. */
	Create,
	/** Note the upload that was begun in the journal: OnBegun. */
	Begin,
	/** Ask the server how far it is: OnExchangeEnded. */
	Ask,
	/** Send the step's bytes of the file: OnExchangeEnded. */
	Send,
	/** Cancel the exchange that runs; it ends through OnExchangeEnded. */
	Stop,
	/** Wait for WaitSeconds: OnWaitOver. Other calls may end the wait earlier. */
	Wait,
	/** Ask the server to throw the upload away: OnExchangeEnded. */
	Terminate,
	/** Let go of the journal, which stays: OnClosed. */
	Close,
	/** Delete the journal: OnClosed. */
	Discard,
	/** Give out the report: the upload is over. Comes once. */
	Tell
};

struct FCorvaneTusStep
{
	ECorvaneTusAction Action = ECorvaneTusAction::None;
	/** Of the file, that are sent. */
	int64 Start = 0;
	int64 Bytes = 0;
	/** The sum that goes with them. */
	ECorvaneHashKind Checksum = ECorvaneHashKind::None;
	double WaitSeconds = 0;
};

/** What was found of the file, and of an upload that an earlier run has begun. */
struct FCorvaneTusOpened
{
	/** Running = the file can be read, and the upload is ours. */
	ECorvaneTransferOutcome Failure = ECorvaneTransferOutcome::Running;
	FString Sentence;
	/** Of the file, in bytes. */
	int64 Size = 0;
	/** In hexadecimal digits, if it was asked for. */
	FString Hash;
	/** Without an address: there is none to go on with. */
	FCorvaneTusUpload Upload;
	/** Why an earlier upload is of no use, the part of a sentence; empty = it is, or there was none. */
	FString WhyFromStart;
	FDateTime NowUtc = FDateTime::MinValue();
};

/** What came of one exchange. */
struct FCorvaneTusEnd
{
	FCorvaneExchangeResult Exchange;
	/** What the server wrote into its answer, up to a limit. */
	FString Text;
	/** Running = all bytes of the file could be read, and it is still the same file. */
	ECorvaneTransferOutcome FileFailure = ECorvaneTransferOutcome::Running;
	FString FileSentence;
	/** It is another file by now. */
	bool bFileChanged = false;
	/** From 0 up to, but without, 1. */
	double Random = 0;
	FDateTime NowUtc = FDateTime::MinValue();
};

/**
 * One resumable upload, as a machine of values: it sees no file, no thread and no clock. It is told what happened and says what to
 * do; calls that do not fit what is going on change nothing. Every start ends in exactly one Tell.
 *
 * The server alone knows how far it is, so behind everything but an orderly answer it is asked. Which extensions of the protocol
 * it has can only be asked for with a verb that the engine does not send; what answers tell of them is used from there on.
 *
 * Now is in seconds from any beginning. Places and sizes are bytes. Thread: one at a time.
 */
class FCorvaneTusMachine
{
public:
	FCorvaneTusMachine(const FString& InURL, const FCorvaneResumableOptions& InOptions, const FCorvaneTusWishes& InWishes);

	FCorvaneTusStep Start(double Now);
	FCorvaneTusStep OnOpened(double Now, const FCorvaneTusOpened& Opened);
	/** @param Failure  Running = it is noted. */
	FCorvaneTusStep OnBegun(double Now, ECorvaneTransferOutcome Failure, const FString& Sentence);
	FCorvaneTusStep OnExchangeEnded(double Now, const FCorvaneTusEnd& End);
	FCorvaneTusStep OnWaitOver(double Now);
	FCorvaneTusStep OnClosed(double Now);

	/** Stops after what cannot be stopped; what the server has stays. */
	FCorvaneTusStep Pause(double Now);
	FCorvaneTusStep Continue(double Now);
	/** Ends it with Cancelled. */
	FCorvaneTusStep Cancel(double Now) { return EndWith(Now, ECorvaneTransferOutcome::Cancelled); }
	/** The program ends: as Cancel, with Ended, and the server keeps what it has in any case. */
	FCorvaneTusStep EndOfProgram(double Now) { return EndWith(Now, ECorvaneTransferOutcome::Ended); }

	/** @param Bytes  of the next pieces at most, besides what the options say; 0 = any number. */
	void LimitPieces(int64 Bytes) { MostOfPiece = Bytes; }

	bool IsPaused() const { return Phase == EPhase::Paused; }
	bool IsOver() const { return Phase == EPhase::Over; }
	const FCorvaneTusWishes& GetWishes() const { return Wishes; }
	const FCorvaneTusUpload& GetUpload() const { return Upload; }
	/** @return bytes that the server has for sure. */
	int64 GetOffset() const { return Offset; }
	/** As it is so far; complete with Tell. */
	const FCorvaneTransferReport& GetReport() const { return Report; }

private:
	enum class EPhase : uint8
	{
		New,
		Opening,
		Creating,
		Beginning,
		Asking,
		Sending,
		Waiting,
		Paused,
		Terminating,
		Closing,
		Over
	};
	/** What is done as soon as it goes on. */
	enum class ENext : uint8
	{
		Create,
		Ask,
		Send
	};

	void MoveTo(EPhase NewPhase, double Now);
	FCorvaneTusStep Do(EPhase NewPhase, double Now, ECorvaneTusAction Action);
	FCorvaneTusStep GoOn(double Now, ENext NewNext, double Seconds = 0);
	FCorvaneTusStep DoNext(double Now);
	FCorvaneTusStep Create(double Now);
	FCorvaneTusStep Send(double Now);
	void TakePiece(FCorvaneTusStep& Step);
	FCorvaneTusStep StopExchange();
	FCorvaneTusStep EndWith(double Now, ECorvaneTransferOutcome Outcome);
	FCorvaneTusStep EndAsWanted(double Now);
	FCorvaneTusStep OnTerminated(double Now, const FCorvaneTusEnd& End);
	FCorvaneTusStep Succeed(double Now);
	FCorvaneTusStep Fail(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence, bool bKeepUpload = true);
	FCorvaneTusStep LetGo(double Now, bool bKeepUpload);
	FCorvaneTusStep Tell(double Now);

	void Count(const FCorvaneTusEnd& End);
	void Learn(const FCorvaneTusHeaders& Told);
	FCorvaneTusStep FollowBreak(double Now, const FCorvaneTusEnd& End);
	FCorvaneTusStep FollowAnswer(double Now, const FCorvaneTusEnd& End);
	FCorvaneTusJudgement Judge(const FCorvaneAnswer& Answer) const;
	FCorvaneTusStep TakeUpload(double Now, const FCorvaneTusEnd& End);
	FCorvaneTusStep TakeOffset(double Now, const FCorvaneTusEnd& End);
	bool Advance(int64 NewOffset);
	void CountRepeated();
	FCorvaneTusStep StartOver(double Now, const FString& Reason);
	FCorvaneTusStep Retry(double Now, const FCorvaneTusEnd& End, const FCorvaneTusJudgement& Judged, ENext NewNext);
	/** What is done after a failure. */
	ENext NextAfterFailure() const { return Upload.Address.IsEmpty() ? ENext::Create : ENext::Ask; }

	const FString URL;
	const FCorvaneResumableOptions Options;
	const FCorvaneTusWishes Wishes;
	FCorvaneTransferReport Report;

	EPhase Phase = EPhase::New;
	double PhaseBegan = 0;
	ENext Next = ENext::Create;
	bool bWantsPause = false;
	bool bStopping = false; // the exchange that runs was told to stop
	ECorvaneTransferOutcome WantedEnd = ECorvaneTransferOutcome::Running; // Running = none
	bool bOpen = false;

	FCorvaneTusUpload Upload;
	FCorvaneTusStep Sent; // the last step that may have bytes
	int64 MostOfPiece = 0; // 0 = any number
	int64 Size = 0;
	int64 Offset = 0; // bytes that the server has
	int64 Mark = 0; // the most that it has had since the upload was begun: what lies beyond is new
	bool bTookOver = false; // an earlier run has begun it, and the server was not asked about it yet
	bool bMayTerminate = true; // as far as is known
	bool bFirstPieceAtOnce = false;
	ECorvaneHashKind Checksum = ECorvaneHashKind::None;
	int32 FailuresInARow = 0; // tries that brought no new byte
};
