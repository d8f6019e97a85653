#include "Upload/UploadMachine.h"

#include "Attempts/Address.h"
#include "Attempts/RetryPolicy.h"
#include "Attempts/TryEnd.h"

namespace CorvaneUploadMachine
{
	/** The engine hands the size of a body on in a number that has 32 bits on some systems. */
	static constexpr int64 MostBytes = MAX_int32;

	static FString SentenceOf(const FString& Reason)
	{
		return TEXT("Not uploaded: ") + Reason + TEXT(".");
	}

	static FString Answered(int32 Code)
	{
		return FString::Printf(TEXT("the server answered with status %d"), Code);
	}
} // namespace CorvaneUploadMachine

FCorvaneUploadMachine::FCorvaneUploadMachine(const FString& URL, const FString& InVerb, const FCorvaneUploadOptions& InOptions)
	: Options(InOptions)
	, bIdempotent(InVerb == TEXT("PUT"))
{
	Report.AskedAddress = CorvaneAddress::WithoutUser(URL);
}

void FCorvaneUploadMachine::MoveTo(EPhase Next, double Now)
{
	if (Phase == EPhase::Waiting)
	{
		Report.SecondsWaited += Now - PhaseBegan;
	}
	else if (Phase == EPhase::Finding || Phase == EPhase::Sending)
	{
		Report.SecondsWorked += Now - PhaseBegan;
	}
	Phase = Next;
	PhaseBegan = Now;
}

FCorvaneUploadStep FCorvaneUploadMachine::Do(EPhase Next, double Now, ECorvaneUploadAction Action)
{
	MoveTo(Next, Now);
	return {Action};
}

FCorvaneUploadStep FCorvaneUploadMachine::Start(double Now, const FString& Fault)
{
	if (Phase != EPhase::New)
	{
		return {};
	}
	if (!Fault.IsEmpty())
	{
		return Close(Now, ECorvaneTransferOutcome::Refused, Fault);
	}
	const bool bOver = WantedEnd != ECorvaneTransferOutcome::Running;
	return bOver ? EndAsWanted(Now) : Do(EPhase::Finding, Now, ECorvaneUploadAction::Find);
}

FCorvaneUploadStep FCorvaneUploadMachine::OnFound(double Now, const FCorvaneUploadFound& Found)
{
	if (Phase != EPhase::Finding)
	{
		return {};
	}
	if (!Found.Result.IsOk())
	{
		return Close(Now, Found.Result.Failure, Found.Result.Sentence);
	}
	Report.TotalBytes = Found.TotalBytes;
	if (Found.TotalBytes > CorvaneUploadMachine::MostBytes)
	{
		return Close(Now, ECorvaneTransferOutcome::Refused,
			TEXT("This is 2 GiB or more, which one request cannot carry everywhere. A resumable upload sends it in pieces."));
	}
	if (WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	NextTryAt = Now;
	return GoOn(Now);
}

/** Sends when it is time, and nobody wants a pause. */
FCorvaneUploadStep FCorvaneUploadMachine::GoOn(double Now)
{
	if (bWantsPause)
	{
		return Do(EPhase::Paused, Now, ECorvaneUploadAction::None);
	}
	if (Now < NextTryAt)
	{
		FCorvaneUploadStep Step = Do(EPhase::Waiting, Now, ECorvaneUploadAction::Wait);
		Step.WaitSeconds = NextTryAt - Now;
		return Step;
	}
	++Report.Attempts;
	return Do(EPhase::Sending, Now, ECorvaneUploadAction::Send);
}

FCorvaneUploadStep FCorvaneUploadMachine::OnTryEnded(double Now, const FCorvaneUploadTryEnd& End)
{
	using namespace CorvaneUploadMachine;
	if (Phase != EPhase::Sending)
	{
		return {};
	}
	Count(End);
	if (!End.Body.Result.IsOk())
	{
		return Close(Now, End.Body.Result.Failure, End.Body.Result.Sentence);
	}
	if (IsTaken(End))
	{
		return Succeed(Now, End);
	}
	if (WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	if (End.Exchange.End == ECorvaneExchangeEnd::NotSent)
	{
		return Close(Now, ECorvaneTransferOutcome::Refused, TEXT("The HTTP module does not send this request."));
	}
	if (End.Exchange.End == ECorvaneExchangeEnd::Cancelled)
	{
		return Close(Now, ECorvaneTransferOutcome::Ended, TEXT("The HTTP module has ended."));
	}
	return End.Exchange.Answer.Code != 0
			   ? FollowAnswer(Now, End)
			   : Retry(Now, End, CorvaneTryEnd::OutcomeOf(End.Exchange.End), CorvaneTryEnd::ReasonOf(End.Exchange.End));
}

void FCorvaneUploadMachine::Count(const FCorvaneUploadTryEnd& End)
{
	Report.TransferredBytes += End.Exchange.SentBytes;
	Report.Answer = End.Answer;
	if (End.Exchange.Answer.Code != 0)
	{
		Report.Code = End.Exchange.Answer.Code;
		Report.ReachedAddress = CorvaneAddress::WithoutUser(End.Exchange.ReachedURL);
	}
	const bool bMayHaveArrived = End.Body.bWhole && End.Exchange.Answer.Code == 0 && End.Exchange.SentBytes > 0;
	Report.HowToGoOn = bMayHaveArrived
						   ? FString(TEXT("All of it was sent, and the server may have taken it: look there before it is sent again."))
						   : FString();
}

/** The server has all and says that it is well. What it says besides may be cut, but only by the limit for it. */
bool FCorvaneUploadMachine::IsTaken(const FCorvaneUploadTryEnd& End) const
{
	const bool bHeardOut = End.Exchange.End == ECorvaneExchangeEnd::Done || End.Exchange.End == ECorvaneExchangeEnd::StoppedByUs;
	return bHeardOut && End.Exchange.Answer.IsSuccess() && End.Body.bWhole;
}

FCorvaneUploadStep FCorvaneUploadMachine::Succeed(double Now, const FCorvaneUploadTryEnd& End)
{
	Report.Hash = End.Body.Hash;
	return Close(Now, ECorvaneTransferOutcome::Succeeded,
		FString::Printf(TEXT("It is uploaded; the server answered with status %d."), End.Exchange.Answer.Code));
}

/** A status counts also when the rest of the answer is missing: servers that refuse often hang up at once. */
FCorvaneUploadStep FCorvaneUploadMachine::FollowAnswer(double Now, const FCorvaneUploadTryEnd& End)
{
	using namespace CorvaneUploadMachine;
	const int32 Code = End.Exchange.Answer.Code;
	if (End.Exchange.Answer.IsSuccess())
	{
		return FollowSuccess(Now, End);
	}
	if (CorvaneRetry::IsPassing(Code))
	{
		return Retry(Now, End, ECorvaneTransferOutcome::ServerError, Answered(Code));
	}
	const bool bElsewhere = Code >= 300 && Code < 400;
	return Close(Now, ECorvaneTransferOutcome::ServerError,
		SentenceOf(Answered(Code) + (bElsewhere ? TEXT(" and wants it at another address, which has to be asked directly") : TEXT(""))));
}

/** Of a server that says "well" and either cannot have read all of it, or breaks off. */
FCorvaneUploadStep FCorvaneUploadMachine::FollowSuccess(double Now, const FCorvaneUploadTryEnd& End)
{
	using namespace CorvaneUploadMachine;
	const FString Said = Answered(End.Exchange.Answer.Code);
	const bool bTold = End.Exchange.End == ECorvaneExchangeEnd::Done || End.Exchange.End == ECorvaneExchangeEnd::StoppedByUs;
	return Retry(Now, End, bTold ? ECorvaneTransferOutcome::Dropped : CorvaneTryEnd::OutcomeOf(End.Exchange.End),
		End.Body.bWhole ? Said + TEXT(", but ") + CorvaneTryEnd::ReasonOf(End.Exchange.End) + TEXT(" before the end of its answer")
						: Said + TEXT(" before it had all"));
}

/** Of an empty body nobody can tell whether it has arrived, if there was a connection at all. */
bool FCorvaneUploadMachine::MayBeSentAgain(const FCorvaneExchangeResult& Exchange) const
{
	const bool bNoneLeft = Exchange.SentBytes == 0 && (Report.TotalBytes > 0 || Exchange.End == ECorvaneExchangeEnd::NoConnection);
	return bIdempotent || Options.bMayBeRepeated || bNoneLeft;
}

FCorvaneUploadStep FCorvaneUploadMachine::Retry(
	double Now, const FCorvaneUploadTryEnd& End, ECorvaneTransferOutcome Outcome, const FString& Reason)
{
	using namespace CorvaneUploadMachine;
	if (!MayBeSentAgain(End.Exchange))
	{
		return Close(Now, Outcome, SentenceOf(Reason + TEXT("; it is not sent again, since the server may have some of it")));
	}
	const double Asked = CorvaneTryEnd::WaitAskedFor(End.Exchange.Answer, End.NowUtc);
	const FCorvaneRetryDecision Next =
		CorvaneRetry::Decide({Options.Attempts, Options.FirstWaitSeconds, Options.LongestWaitSeconds}, Report.Attempts, Asked, End.Random);
	if (!Next.bAgain)
	{
		return Close(Now, Outcome, SentenceOf(Reason + Next.WhyNot));
	}
	if (End.Exchange.SentBytes > 0)
	{
		++Report.Restarts;
		Report.RestartReasons.Add(Reason);
		Report.RepeatedBytes = Report.TransferredBytes;
	}
	NextTryAt = Now + Next.WaitSeconds;
	return GoOn(Now);
}

FCorvaneUploadStep FCorvaneUploadMachine::OnWaitOver(double Now)
{
	if (Phase != EPhase::Waiting)
	{
		return {};
	}
	NextTryAt = Now;
	return GoOn(Now);
}

FCorvaneUploadStep FCorvaneUploadMachine::Pause(double Now)
{
	if (Phase == EPhase::New || IsOver() || WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return {};
	}
	bWantsPause = true;
	return Phase == EPhase::Waiting ? GoOn(Now) : FCorvaneUploadStep();
}

FCorvaneUploadStep FCorvaneUploadMachine::Continue(double Now)
{
	bWantsPause = false;
	return Phase == EPhase::Paused ? GoOn(Now) : FCorvaneUploadStep();
}

FCorvaneUploadStep FCorvaneUploadMachine::EndWith(double Now, ECorvaneTransferOutcome Outcome)
{
	if (IsOver() || WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return {};
	}
	WantedEnd = Outcome;
	if (Phase == EPhase::Waiting || Phase == EPhase::Paused)
	{
		return EndAsWanted(Now);
	}
	return {Phase == EPhase::Sending ? ECorvaneUploadAction::Stop : ECorvaneUploadAction::None};
}

FCorvaneUploadStep FCorvaneUploadMachine::EndAsWanted(double Now)
{
	return Close(Now, WantedEnd,
		WantedEnd == ECorvaneTransferOutcome::Cancelled ? FString(TEXT("It was cancelled.")) : FString(TEXT("The program ended.")));
}

FCorvaneUploadStep FCorvaneUploadMachine::Close(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence)
{
	Report.Outcome = Outcome;
	Report.Sentence = Sentence;
	bWantsPause = false;
	return Do(EPhase::Over, Now, ECorvaneUploadAction::Tell);
}
