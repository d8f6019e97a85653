#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneDownloadOptions.h"
#include "CorvaneTransferReport.h"
#include "Download/DownloadAnswer.h"
#include "Download/DownloadQuestion.h"
#include "Misc/DateTime.h"

/** What the driver of a download does next. It tells the machine what came of it by the function named here. */
enum class ECorvaneDownloadAction : uint8
{
	/** Go on with what is being done. */
	None,
	/** Look whether the target exists: OnLooked. */
	Look,
	/**
	 * Look what an earlier run has left, and keep nothing open: OnRestFound. It ends before its part file was opened, and so may
	 * thousands that wait beside it.
	 */
	LookForRest,
	/** Open the part file and lock the target: OnOpened. With bAskIfNew, and nothing on disk, it may go on with an exchange at once. */
	Open,
	/** Start an exchange with Question: OnAttemptEnded, after the last byte of it is in the file. */
	Ask,
	/** Cancel the exchange that runs, if it runs; it ends through OnAttemptEnded. May come twice. */
	Stop,
	/** Wait for WaitSeconds: OnWaitOver. Other calls may end the wait earlier. */
	Wait,
	/** Secure what is on disk: the download is paused, maybe for long. Nothing is told; the next try ends at once if bytes were lost. */
	Hold,
	/** Check the part file, put it in the target's place, and let go of it: OnFinished. */
	Finish,
	/** Finish reads the file no further; it ends through OnFinished. */
	StopFinishing,
	/** Secure what is on disk, if there is anything, and let go of it: OnClosed. */
	Close,
	/** Delete part file and journal: OnClosed. */
	Discard,
	/** Give out the report: the download is over. Comes once. */
	Tell
};

struct FCorvaneDownloadStep
{
	ECorvaneDownloadAction Action = ECorvaneDownloadAction::None;
	FCorvaneDownloadQuestion Question;
	/** Of Open: if there is nothing on disk, Question is what Ask would bring; OnAttemptEnded then stands for OnOpened, too. */
	bool bAskIfNew = false;
	double WaitSeconds = 0;
};

/** What opening the part file found. */
struct FCorvaneDownloadOpened
{
	/** Running = it is open. */
	ECorvaneTransferOutcome Failure = ECorvaneTransferOutcome::Running;
	FString Sentence;
	/** Bytes that the journal vouches for; of a failure, those that are left. */
	int64 Length = 0;
	/** Of what is on disk: FCorvaneVersion::FromDisk. */
	FCorvaneVersion Version;
	int64 Total = -1;
	/** An earlier run was ended between replacing the target and cleaning up: the target is the file. */
	bool bWholeAlready = false;
};

/** What came of putting the file in its place. */
struct FCorvaneDownloadFinished
{
	/** Succeeded, or why not. WrongHash means that the bytes are of no use, Cancelled that StopFinishing came in time. */
	ECorvaneTransferOutcome Outcome = ECorvaneTransferOutcome::Succeeded;
	FString Sentence;
	FString Hash;
	/** Of a failure: bytes that are kept beside the target. */
	int64 KeptBytes = 0;
};

/** What came of one exchange, all of whose bytes are in the file. */
struct FCorvaneAttemptEnd
{
	FCorvaneExchangeResult Exchange;
	/** Bytes in the part file now. Fewer than the question goes on behind: the disk has lost them, and nothing was asked. */
	int64 Length = 0;
	/** Bytes that were written into it. */
	int64 Written = 0;
	/** The part file was begun anew for this answer. */
	bool bStartedOver = false;
	/** The bytes that were to be compared are others. */
	bool bTailDiffers = false;
	/** All of them came, and are the same. */
	bool bTailPassed = false;
	/** There were more bytes than MostBytes; those behind are not in the file. */
	bool bTooLong = false;
	/** Running = all files could be written. */
	ECorvaneTransferOutcome FileFailure = ECorvaneTransferOutcome::Running;
	FString FileSentence;
	/** From 0 up to, but without, 1. */
	double Random = 0;
	FDateTime NowUtc = FDateTime::MinValue();
	/** The driver has put the file in its place already, as it may when CorvaneDownload::BringsWholeFile. */
	bool bFinished = false;
	FCorvaneDownloadFinished Finished;
};

namespace CorvaneDownload
{
	/** @return whether the try has brought the last byte of the file, and nothing speaks against it but maybe its hash. Thread: any. */
	bool BringsWholeFile(const FCorvaneDownloadQuestion& Question, const FCorvaneDownloadJudgement& Judged, const FCorvaneAttemptEnd& End);
} // namespace CorvaneDownload

/**
 * One download to a file, as a machine of values: it sees no file, no thread and no clock. It is told what happened and says
 * what to do; calls that do not fit what is going on change nothing. Every start ends in exactly one Tell.
 *
 * Now is in seconds from any beginning. Positions and sizes are bytes. Thread: one at a time.
 */
class FCorvaneDownloadMachine
{
public:
	FCorvaneDownloadMachine(const FString& URL, const FString& InTarget, const FCorvaneDownloadOptions& InOptions);

	/** @param Fault  what CorvaneDownload::FindFault says. */
	FCorvaneDownloadStep Start(double Now, const FString& Fault);
	/** @param TargetTime  UTC; of a target that exists. */
	FCorvaneDownloadStep OnLooked(double Now, bool bTargetExists, const FDateTime& TargetTime);
	/** @param Bytes  that the journal vouches for. @param InTotal  -1 = unknown. */
	FCorvaneDownloadStep OnRestFound(double Now, int64 Bytes, int64 InTotal);
	FCorvaneDownloadStep OnOpened(double Now, const FCorvaneDownloadOpened& Opened);
	FCorvaneDownloadStep OnAttemptEnded(double Now, const FCorvaneAttemptEnd& End);
	FCorvaneDownloadStep OnWaitOver(double Now);
	FCorvaneDownloadStep OnFinished(double Now, const FCorvaneDownloadFinished& Finished);
	/** @param KeptBytes  that are left beside the target. */
	FCorvaneDownloadStep OnClosed(double Now, int64 KeptBytes);

	/** Stops after what cannot be stopped; the bytes stay. */
	FCorvaneDownloadStep Pause(double Now);
	FCorvaneDownloadStep Continue(double Now);
	/** Ends it with Cancelled; the bytes stay. A file that is just being put in its place is. */
	FCorvaneDownloadStep Cancel(double Now) { return EndWith(Now, ECorvaneTransferOutcome::Cancelled); }
	/** The program ends: as Cancel, with Ended. */
	FCorvaneDownloadStep EndOfProgram(double Now) { return EndWith(Now, ECorvaneTransferOutcome::Ended); }

	/** @param Bytes  that a try asks for at most, from the next one on; 0 = any number. */
	void LimitParts(int64 Bytes) { MostOfPart = Bytes; }
	/** A limit has come: a try that asked for all that follow is stopped, and asks anew. */
	FCorvaneDownloadStep AskInParts();

	bool IsPaused() const { return Phase == EPhase::Paused; }
	bool IsOver() const { return Phase == EPhase::Over; }
	/** Whether it was cancelled, or the program ends. */
	bool IsToEnd() const { return WantedEnd != ECorvaneTransferOutcome::Running; }
	const FString& GetTarget() const { return Target; }
	const FCorvaneDownloadOptions& GetOptions() const { return Options; }
	/** Of what is on disk. */
	const FCorvaneVersion& GetVersion() const { return Version; }
	/** As it is so far; complete with Tell. */
	const FCorvaneTransferReport& GetReport() const { return Report; }

private:
	enum class EPhase : uint8
	{
		New,
		Looking,
		Opening,
		Asking,
		Waiting,
		Paused,
		Finishing,
		Closing,
		Over
	};

	void MoveTo(EPhase Next, double Now);
	FCorvaneDownloadStep Do(EPhase Next, double Now, ECorvaneDownloadAction Action);
	FCorvaneDownloadStep OnLookedAgain(double Now, bool bTargetExists);
	FCorvaneDownloadStep Open(double Now);
	FCorvaneDownloadStep StopAsking();
	FCorvaneDownloadStep EndWith(double Now, ECorvaneTransferOutcome Outcome);
	FCorvaneDownloadStep EndAsWanted(double Now);

	FCorvaneDownloadQuestion MakeQuestion() const;
	FCorvaneDownloadStep Ask(double Now);
	FCorvaneDownloadStep GoOn(double Now, double Seconds);
	FCorvaneDownloadStep StartOver(double Now, const FString& Reason, ECorvaneTransferOutcome Outcome);
	FCorvaneDownloadStep Retry(double Now, const FCorvaneAttemptEnd& End, ECorvaneTransferOutcome Outcome, const FString& Reason);
	FCorvaneDownloadStep Finish(double Now);
	FCorvaneDownloadStep KeepTarget(double Now, const FString& Sentence);
	FCorvaneDownloadStep Fail(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence, bool bKeepBytes = true);
	FCorvaneDownloadStep FailBeforeOpen(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence);
	FCorvaneDownloadStep LetGo(double Now, bool bKeepBytes);
	FCorvaneDownloadStep Tell(double Now);

	void Count(const FCorvaneAttemptEnd& End);
	void NoteRestart(const FString& Reason);
	void TakeOver(const FCorvaneAttemptEnd& End, const FCorvaneDownloadJudgement& Judged);
	FCorvaneDownloadStep FollowFinished(double Now, const FCorvaneAttemptEnd& End);
	FCorvaneDownloadStep FollowAnswer(double Now, const FCorvaneAttemptEnd& End);
	FCorvaneDownloadStep FollowBody(double Now, const FCorvaneAttemptEnd& End, const FCorvaneDownloadJudgement& Judged);
	FCorvaneDownloadStep FollowBreak(double Now, const FCorvaneAttemptEnd& End);

	int64 PartBytes(int64 Compare) const;

	const FString Target;
	const FCorvaneDownloadOptions Options;
	FCorvaneTransferReport Report;

	EPhase Phase = EPhase::New;
	double PhaseBegan = 0;
	bool bWantsPause = false;
	bool bStopping = false; // the try that runs was told to stop
	bool bStoppedLast = false; // the one before it was
	ECorvaneTransferOutcome WantedEnd = ECorvaneTransferOutcome::Running; // Running = none

	FCorvaneDownloadQuestion Question; // of the try that runs, or ran last
	FDateTime IfNewerThan = FDateTime::MinValue();
	bool bIsNewer = false; // an answer has brought bytes in spite of that
	FCorvaneVersion Version; // of what is on disk, as the next
	int64 Length = 0;
	int64 Total = -1;
	int64 Mark = 0; // the most that has been on disk since it was begun: what lies beyond is new
	bool bOpen = false;
	bool bFromStart = false; // what is on disk is of no use
	bool bPacked = false; // the server packs the file on the way: no range says where what is on disk ends
	bool bNoRanges = false; // the server cannot send parts of it
	bool bThrewAway = false; // the last try began anew with bytes on disk, and nobody had told it to
	bool bChangedLast = false; // what was sent instead of a rest was of another version, as far as that can be told
	bool bGotNew = false; // the last try brought a new byte
	int64 MostOfPart = 0; // 0 = any number
	int32 FailuresInARow = 0; // tries without one
	int32 RestartsOfServer = 0; // those that do not follow a stop of ours, such as a pause
};
