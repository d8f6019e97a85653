#pragma once

#include "Attempts/Exchange.h"
#include "CoreMinimal.h"
#include "CorvaneFollowOptions.h"
#include "CorvaneTransferReport.h"
#include "Misc/DateTime.h"

namespace CorvaneFollow
{
	/** What an answer means to somebody who wants events. */
	enum class EVerdict : uint8
	{
		/** Events follow. */
		Stream,
		/** There are none, and never will be. */
		NoMore,
		/** A later try may end otherwise. */
		Passing,
		/** Something else, or a refusal. */
		NotForUs
	};

	/** Events that nobody takes hold their connection up for so long at most. */
	inline constexpr int32 PatienceSeconds = 10;

	EVerdict JudgeAnswer(const FCorvaneAnswer& Answer);
} // namespace CorvaneFollow

/** What the driver does next. It tells the machine what came of it by the function named here. */
enum class ECorvaneFollowAction : uint8
{
	/** Go on with what is being done. */
	None,
	/** Ask the owner for the headers of the next try: OnPrepared. */
	Prepare,
	/** Start an exchange: OnAnswer if it becomes a stream, OnEvent, and OnTryEnded when all its events are told. */
	Ask,
	/** Cancel the exchange that runs; it ends through OnTryEnded. */
	Stop,
	/** Wait for WaitSeconds: OnWaitOver. Other calls may end the wait earlier. */
	Wait,
	/** Give out the report: it is over. Comes once. */
	Tell
};

struct FCorvaneFollowStep
{
	ECorvaneFollowAction Action = ECorvaneFollowAction::None;
	double WaitSeconds = 0;
};

/** What came of one exchange. */
struct FCorvaneFollowTryEnd
{
	FCorvaneExchangeResult Exchange;
	/** Seconds that the server wants to pass before the next; -1 = it did not say. */
	double RetrySeconds = -1;
	/** The ID that a later start can go on behind; empty = there is none. */
	FString LastEventID;
	/** From 0 up to, but without, 1. */
	double Random = 0;
	FDateTime NowUtc = FDateTime::MinValue();
};

/**
 * One stream of events that is followed over any number of connections, as a machine of values: it sees no byte, no thread and
 * no clock. It is told what happened and says what to do; calls that do not fit what is going on change nothing. Every start
 * ends in exactly one Tell.
 *
 * The engine cannot hold a connection without reading it, so a pause gives it up, and going on connects again.
 *
 * Now is in seconds from any beginning. Thread: one at a time.
 */
class FCorvaneFollowMachine
{
public:
	FCorvaneFollowMachine(const FString& URL, const FCorvaneFollowOptions& InOptions);

	/** @param Fault  what CorvaneFollow::FindFault says. */
	FCorvaneFollowStep Start(double Now, const FString& Fault);
	/** @param Fault  what CorvaneFollow::FindHeaderFault says of the new headers. */
	FCorvaneFollowStep OnPrepared(double Now, const FString& Fault);
	/** The answer is a stream. */
	void OnAnswer(double Now, const FCorvaneAnswer& Answer);
	void OnEvent() { ++EventsOfTry; }
	/** A line or an event is above the limit. */
	FCorvaneFollowStep OnTooLong(double Now);
	FCorvaneFollowStep OnTryEnded(double Now, const FCorvaneFollowTryEnd& End);
	FCorvaneFollowStep OnWaitOver(double Now);

	FCorvaneFollowStep Pause(double Now);
	FCorvaneFollowStep Continue(double Now);
	FCorvaneFollowStep Cancel(double Now);
	/** The program ends: as Cancel, with Ended. */
	FCorvaneFollowStep EndOfProgram(double Now);

	/** Whether the owner wants to hear events now. */
	bool MayTell() const { return !bWantsPause && !IsEnding(); }
	/** Whether all that is still to come is the end. */
	bool IsEnding() const { return WantedEnd != ECorvaneTransferOutcome::Running || IsOver(); }
	bool IsPaused() const { return bWantsPause; }
	bool IsOver() const { return Phase == EPhase::Over; }
	/** As it is so far; complete with Tell. */
	const FCorvaneTransferReport& GetReport() const { return Report; }

private:
	enum class EPhase : uint8
	{
		New,
		Preparing,
		Asking,
		Waiting,
		Paused,
		Over
	};

	void MoveTo(EPhase Next, double Now);
	FCorvaneFollowStep Do(EPhase Next, double Now, ECorvaneFollowAction Action);
	FCorvaneFollowStep EndWith(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence);
	FCorvaneFollowStep Close(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence);
	FCorvaneFollowStep Ask(double Now);
	void Count(const FCorvaneFollowTryEnd& End);
	FCorvaneFollowStep FollowAnswer(double Now, const FCorvaneFollowTryEnd& End);
	FCorvaneFollowStep CloseForAnswer(double Now, const FCorvaneAnswer& Answer);
	FCorvaneFollowStep Retry(double Now, const FCorvaneFollowTryEnd& End);
	FCorvaneFollowStep CloseForGood(double Now, ECorvaneExchangeEnd End);
	ECorvaneTransferOutcome OutcomeOf(const FCorvaneFollowTryEnd& End) const;
	FString ReasonOf(const FCorvaneFollowTryEnd& End) const;
	double WaitAfter(const FCorvaneFollowTryEnd& End) const;

	const FCorvaneFollowOptions Options;
	FCorvaneTransferReport Report;

	EPhase Phase = EPhase::New;
	double PhaseBegan = 0;
	bool bWantsPause = false;
	bool bPrepared = false; // paused by the owner who was asked for headers: he has them when he goes on
	bool bStopping = false; // the exchange that runs was told to stop, for a pause
	ECorvaneTransferOutcome WantedEnd = ECorvaneTransferOutcome::Running; // Running = none
	FString WantedSentence;

	double OpenedAt = -1; // -1 = the try that runs has brought no stream yet
	int64 EventsOfTry = 0;
	double ServerRetry = -1; // seconds; -1 = the server has asked for none
	int32 IdleInARow = 0; // tries that brought nothing
	int32 ClosedInARow = 0; // tries that did not even bring a stream
};
