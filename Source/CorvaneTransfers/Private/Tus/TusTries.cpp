#include "Attempts/Address.h"
#include "Attempts/RetryPolicy.h"
#include "Attempts/TryEnd.h"
#include "Tus/TusMachine.h"

// What follows an exchange.

namespace CorvaneTusTries
{
	/** A server that forgets each upload is not asked for ever. */
	static constexpr int32 MostRestarts = 3;

	static FString SentenceOf(const FString& Reason)
	{
		return TEXT("Not uploaded: ") + Reason + TEXT(".");
	}
} // namespace CorvaneTusTries

FCorvaneTusStep FCorvaneTusMachine::OnExchangeEnded(double Now, const FCorvaneTusEnd& End)
{
	const bool bRuns = Phase == EPhase::Creating || Phase == EPhase::Asking || Phase == EPhase::Sending;
	if (Phase == EPhase::Terminating)
	{
		return OnTerminated(Now, End);
	}
	if (!bRuns)
	{
		return {};
	}
	Count(End);
	if (End.FileFailure != ECorvaneTransferOutcome::Running)
	{
		return Fail(Now, End.FileFailure, End.FileSentence, !End.bFileChanged);
	}
	if (End.Exchange.End == ECorvaneExchangeEnd::NotSent)
	{
		return Fail(Now, ECorvaneTransferOutcome::Refused, TEXT("The HTTP module does not send this request."));
	}
	// A refusal may come while the piece is still being sent, and break the connection off: its code is all that is needed. So
	// does a redirect that wants the piece again, which a stream cannot give.
	const bool bAnswered = End.Exchange.bAnswerIsWhole || End.Exchange.Answer.Code >= 300;
	return bAnswered ? FollowAnswer(Now, End) : FollowBreak(Now, End);
}

void FCorvaneTusMachine::Count(const FCorvaneTusEnd& End)
{
	Report.TransferredBytes += End.Exchange.SentBytes;
	if (End.Exchange.Answer.Code != 0)
	{
		Report.Code = End.Exchange.Answer.Code;
		Report.Answer = End.Text;
		Report.ReachedAddress = CorvaneAddress::WithoutUser(End.Exchange.ReachedURL);
	}
	Learn(FCorvaneTusHeaders::Read(End.Exchange.Answer));
}

void FCorvaneTusMachine::Learn(const FCorvaneTusHeaders& Told)
{
	if (Told.Expires.GetTicks() > 0)
	{
		Upload.Expires = Told.Expires;
	}
	if (Told.bTellsExtensions)
	{
		bMayTerminate = Told.bTerminates;
		bFirstPieceAtOnce = Told.bTakesFirstPiece;
		Checksum = Wishes.PieceChecksum == ECorvaneHashKind::None ? Told.Checksum : Wishes.PieceChecksum;
	}
}

FCorvaneTusStep FCorvaneTusMachine::FollowBreak(double Now, const FCorvaneTusEnd& End)
{
	if (WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	if (bStopping)
	{
		return GoOn(Now, NextAfterFailure()); // paused, and maybe continued since
	}
	FCorvaneTusJudgement Judged;
	Judged.Outcome = CorvaneTryEnd::OutcomeOf(End.Exchange.End);
	Judged.Reason = CorvaneTryEnd::ReasonOf(End.Exchange.End);
	return Retry(Now, End, Judged, NextAfterFailure());
}

FCorvaneTusJudgement FCorvaneTusMachine::Judge(const FCorvaneAnswer& Answer) const
{
	switch (Phase)
	{
	case EPhase::Creating:
		return CorvaneTus::JudgeCreation(Answer, Size);
	case EPhase::Asking:
		return CorvaneTus::JudgeOffset(Answer, Size);
	default:
		return CorvaneTus::JudgePiece(Answer, Sent.Start, Sent.Start + Sent.Bytes);
	}
}

FCorvaneTusStep FCorvaneTusMachine::FollowAnswer(double Now, const FCorvaneTusEnd& End)
{
	using namespace CorvaneTusTries;
	const FCorvaneTusJudgement Judged = Judge(End.Exchange.Answer);
	if (Judged.Verdict == ECorvaneTusVerdict::Created)
	{
		return TakeUpload(Now, End);
	}
	if (Judged.Verdict == ECorvaneTusVerdict::Told)
	{
		return TakeOffset(Now, End);
	}
	if (WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	switch (Judged.Verdict)
	{
	case ECorvaneTusVerdict::StartOver:
		return StartOver(Now, Judged.Reason);
	case ECorvaneTusVerdict::SendAgain:
		return Retry(Now, End, Judged, Upload.Address.IsEmpty() ? ENext::Create : ENext::Send);
	case ECorvaneTusVerdict::AskAgain:
	case ECorvaneTusVerdict::Wait:
		return Retry(Now, End, Judged, NextAfterFailure());
	default:
		return Fail(Now, Judged.Outcome, SentenceOf(Judged.Reason));
	}
}

/** The server has begun an upload; before a byte goes to it, or a wish for its end, it is noted. */
FCorvaneTusStep FCorvaneTusMachine::TakeUpload(double Now, const FCorvaneTusEnd& End)
{
	using namespace CorvaneTusTries;
	const FCorvaneTusHeaders Told = FCorvaneTusHeaders::Read(End.Exchange.Answer);
	const FString& Base = End.Exchange.ReachedURL.IsEmpty() ? URL : End.Exchange.ReachedURL;
	const FString Address = CorvaneAddress::Resolve(Base, Told.Location);
	const bool bLosesProtection =
		URL.StartsWith(TEXT("https:"), ESearchCase::IgnoreCase) && !Address.StartsWith(TEXT("https:"), ESearchCase::IgnoreCase);
	if (Address.IsEmpty() || bLosesProtection)
	{
		return Fail(Now, ECorvaneTransferOutcome::ServerError,
			SentenceOf(TEXT("the server named an address for the upload that nothing is sent to")));
	}
	Upload.Address = Address;
	Upload.Expires = Told.Expires;
	Next = ENext::Send;
	if (Sent.Bytes > 0)
	{
		const bool bTold = Told.Offset >= 0 && Told.Offset <= Sent.Bytes;
		Next = bTold ? ENext::Send : ENext::Ask;
		Advance(bTold ? Told.Offset : 0);
	}
	return Do(EPhase::Beginning, Now, ECorvaneTusAction::Begin);
}

FCorvaneTusStep FCorvaneTusMachine::TakeOffset(double Now, const FCorvaneTusEnd& End)
{
	const bool bAsked = Phase == EPhase::Asking;
	const int64 Told = FCorvaneTusHeaders::Read(End.Exchange.Answer).Offset;
	if (bTookOver)
	{
		Report.TakenOverBytes = Mark = Told;
		bTookOver = false;
	}
	const bool bNew = Advance(Told);
	if (Offset == Size)
	{
		return Succeed(Now);
	}
	if (WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	if (bAsked || bNew || Told > Sent.Start) // of a server that had gone back, bytes that it had before
	{
		return GoOn(Now, ENext::Send);
	}
	FCorvaneTusJudgement Judged;
	Judged.Reason = TEXT("the server takes no more of the file, although it is not whole");
	return Retry(Now, End, Judged, ENext::Ask);
}

/** @return whether there is a new byte. */
bool FCorvaneTusMachine::Advance(int64 NewOffset)
{
	Offset = NewOffset;
	const bool bNew = Offset > Mark;
	Mark = FMath::Max(Mark, Offset);
	FailuresInARow = bNew ? 0 : FailuresInARow;
	CountRepeated();
	return bNew;
}

/** What was sent, and is not there. */
void FCorvaneTusMachine::CountRepeated()
{
	Report.RepeatedBytes = FMath::Max<int64>(Report.TakenOverBytes + Report.TransferredBytes - Offset, 0);
}

/** The journal keeps the old upload until a new one is begun. */
FCorvaneTusStep FCorvaneTusMachine::StartOver(double Now, const FString& Reason)
{
	using namespace CorvaneTusTries;
	Upload = FCorvaneTusUpload();
	Offset = Mark = Report.TakenOverBytes = 0;
	bTookOver = false;
	CountRepeated();
	++Report.Restarts;
	Report.RestartReasons.Add(Reason);
	return Report.Restarts > MostRestarts ? Fail(Now, ECorvaneTransferOutcome::ServerError, SentenceOf(Reason)) : GoOn(Now, ENext::Create);
}

FCorvaneTusStep FCorvaneTusMachine::Retry(double Now, const FCorvaneTusEnd& End, const FCorvaneTusJudgement& Judged, ENext NewNext)
{
	using namespace CorvaneTusTries;
	const FCorvaneRetryLimits Limits{Options.Attempts, Options.FirstWaitSeconds, Options.LongestWaitSeconds};
	const FCorvaneRetryDecision Decision =
		CorvaneRetry::Decide(Limits, ++FailuresInARow, CorvaneTryEnd::WaitAskedFor(End.Exchange.Answer, End.NowUtc), End.Random);
	return Decision.bAgain ? GoOn(Now, NewNext, Decision.WaitSeconds)
						   : Fail(Now, Judged.Outcome, SentenceOf(Judged.Reason + Decision.WhyNot));
}

FCorvaneTusStep FCorvaneTusMachine::OnTerminated(double Now, const FCorvaneTusEnd& End)
{
	const FCorvaneAnswer& Answer = End.Exchange.Answer;
	const bool bGone = End.Exchange.bAnswerIsWhole && (Answer.IsSuccess() || Answer.Code == 404 || Answer.Code == 410);
	return Fail(Now, WantedEnd,
		bGone ? TEXT("The upload was cancelled, and the server has thrown it away.")
			  : TEXT("The upload was cancelled; the server was asked to throw it away, but did not say that it has."),
		!bGone);
}
