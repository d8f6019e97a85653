#include "Events/FollowMachine.h"

#include "Attempts/Address.h"
#include "Attempts/RetryPolicy.h"
#include "Attempts/TryEnd.h"

namespace CorvaneFollowMachine
{
	/** A stream that was open so long was worth its connection, even without an event. */
	static constexpr double SecondsOfGoodStream = 10;
	/** What a server asks for is not waited any longer. */
	static constexpr double MostServerSeconds = 60 * 60;

	static bool IsEventStream(const FString& ContentType)
	{
		FString Type = ContentType;
		FString Parameters;
		ContentType.Split(TEXT(";"), &Type, &Parameters, ESearchCase::CaseSensitive, ESearchDir::FromStart);
		return Type.TrimEnd().Equals(TEXT("text/event-stream"), ESearchCase::IgnoreCase);
	}

	/** Whether the server may have begun to work on a question. */
	static bool MayBeTaken(const FCorvaneExchangeResult& Exchange)
	{
		const int32 Code = Exchange.Answer.Code;
		const bool bPutOff = Exchange.bAnswerIsWhole && (Code == 425 || Code == 429 || Code == 503);
		return !bPutOff && Exchange.End != ECorvaneExchangeEnd::NoConnection;
	}
} // namespace CorvaneFollowMachine

CorvaneFollow::EVerdict CorvaneFollow::JudgeAnswer(const FCorvaneAnswer& Answer)
{
	if (Answer.Code == 200 && !Answer.bEncoded && CorvaneFollowMachine::IsEventStream(Answer.ContentType))
	{
		return EVerdict::Stream;
	}
	if (Answer.Code == 204)
	{
		return EVerdict::NoMore;
	}
	return CorvaneRetry::IsPassing(Answer.Code) ? EVerdict::Passing : EVerdict::NotForUs;
}

FCorvaneFollowMachine::FCorvaneFollowMachine(const FString& URL, const FCorvaneFollowOptions& InOptions)
	: Options(InOptions)
{
	Report.AskedAddress = CorvaneAddress::WithoutUser(URL);
}

void FCorvaneFollowMachine::MoveTo(EPhase Next, double Now)
{
	if (Phase == EPhase::Waiting)
	{
		Report.SecondsWaited += Now - PhaseBegan;
	}
	else if (Phase == EPhase::Asking)
	{
		Report.SecondsWorked += Now - PhaseBegan;
	}
	Phase = Next;
	PhaseBegan = Now;
}

FCorvaneFollowStep FCorvaneFollowMachine::Do(EPhase Next, double Now, ECorvaneFollowAction Action)
{
	MoveTo(Next, Now);
	return {Action};
}

FCorvaneFollowStep FCorvaneFollowMachine::Start(double Now, const FString& Fault)
{
	if (Phase != EPhase::New)
	{
		return {};
	}
	return Fault.IsEmpty() ? Do(EPhase::Preparing, Now, ECorvaneFollowAction::Prepare)
						   : Close(Now, ECorvaneTransferOutcome::Refused, Fault);
}

FCorvaneFollowStep FCorvaneFollowMachine::OnPrepared(double Now, const FString& Fault)
{
	if (Phase != EPhase::Preparing)
	{
		return {};
	}
	if (IsEnding())
	{
		return Close(Now, WantedEnd, WantedSentence);
	}
	if (!Fault.IsEmpty())
	{
		return Close(Now, ECorvaneTransferOutcome::Refused, Fault);
	}
	bPrepared = bWantsPause;
	return bWantsPause ? Do(EPhase::Paused, Now, ECorvaneFollowAction::None) : Ask(Now);
}

FCorvaneFollowStep FCorvaneFollowMachine::Ask(double Now)
{
	++Report.Attempts;
	OpenedAt = -1;
	EventsOfTry = 0;
	bPrepared = bStopping = false;
	return Do(EPhase::Asking, Now, ECorvaneFollowAction::Ask);
}

void FCorvaneFollowMachine::OnAnswer(double Now, const FCorvaneAnswer& Answer)
{
	Report.Code = Answer.Code;
	OpenedAt = Now;
}

FCorvaneFollowStep FCorvaneFollowMachine::OnTooLong(double Now)
{
	return EndWith(Now, ECorvaneTransferOutcome::WrongSize,
		FString::Printf(TEXT("The server sent a line or an event of more than %d bytes."), Options.MostEventBytes));
}

FCorvaneFollowStep FCorvaneFollowMachine::OnTryEnded(double Now, const FCorvaneFollowTryEnd& End)
{
	if (Phase != EPhase::Asking)
	{
		return {};
	}
	Count(End);
	if (IsEnding())
	{
		return Close(Now, WantedEnd, WantedSentence);
	}
	if (End.Exchange.End == ECorvaneExchangeEnd::NotSent)
	{
		return Close(Now, ECorvaneTransferOutcome::Refused, TEXT("The HTTP module does not send this request."));
	}
	return End.Exchange.bAnswerIsWhole ? FollowAnswer(Now, End) : Retry(Now, End);
}

void FCorvaneFollowMachine::Count(const FCorvaneFollowTryEnd& End)
{
	Report.TransferredBytes += End.Exchange.BodyBytes;
	if (End.Exchange.Answer.Code != 0)
	{
		Report.Code = End.Exchange.Answer.Code;
		Report.ReachedAddress = CorvaneAddress::WithoutUser(End.Exchange.ReachedURL);
	}
	ServerRetry = End.RetrySeconds >= 0 ? End.RetrySeconds : ServerRetry;
	if (!End.LastEventID.IsEmpty())
	{
		Report.HowToGoOn = TEXT("Start again with the ID of the last event to go on behind it.");
	}
}

FCorvaneFollowStep FCorvaneFollowMachine::FollowAnswer(double Now, const FCorvaneFollowTryEnd& End)
{
	switch (CorvaneFollow::JudgeAnswer(End.Exchange.Answer))
	{
	case CorvaneFollow::EVerdict::NoMore:
		return Close(Now, ECorvaneTransferOutcome::Ended, TEXT("The server has no more events."));
	case CorvaneFollow::EVerdict::NotForUs:
		return CloseForAnswer(Now, End.Exchange.Answer);
	default:
		return Retry(Now, End);
	}
}

FCorvaneFollowStep FCorvaneFollowMachine::CloseForAnswer(double Now, const FCorvaneAnswer& Answer)
{
	FString Sentence = FString::Printf(TEXT("The server answered with status %d."), Answer.Code);
	if (Answer.Code == 200)
	{
		Sentence = Answer.bEncoded
					   ? FString(TEXT("The server packs its events although it was asked not to."))
					   : TEXT("The server sent no events (text/event-stream) but ") +
							 (Answer.ContentType.IsEmpty() ? FString(TEXT("something without a type")) : Answer.ContentType) + TEXT(".");
	}
	return Close(Now, ECorvaneTransferOutcome::ServerError, Sentence);
}

/** One that was stopped for a pause, or because the owner did not keep up with its events, was no failure of the server. */
FCorvaneFollowStep FCorvaneFollowMachine::Retry(double Now, const FCorvaneFollowTryEnd& End)
{
	if (bWantsPause)
	{
		return Do(EPhase::Paused, Now, ECorvaneFollowAction::None);
	}
	// A stream may be quiet: then its lines are all that has come of it.
	const bool bOpened = OpenedAt >= 0 || CorvaneFollow::JudgeAnswer(End.Exchange.Answer) == CorvaneFollow::EVerdict::Stream;
	const bool bBehind = bOpened && End.Exchange.End == ECorvaneExchangeEnd::StoppedByUs; // else it was a page's body
	if (bStopping || (bBehind && Options.bReconnect))
	{
		return Do(EPhase::Preparing, Now, ECorvaneFollowAction::Prepare);
	}
	if (End.Exchange.End == ECorvaneExchangeEnd::Cancelled)
	{
		return Close(Now, ECorvaneTransferOutcome::Ended, TEXT("The HTTP module has ended."));
	}
	if (bOpened && !Options.bReconnect)
	{
		return CloseForGood(Now, End.Exchange.End);
	}
	if (Options.bPost && !Options.bReconnect && CorvaneFollowMachine::MayBeTaken(End.Exchange))
	{
		return Close(Now, OutcomeOf(End), FString::Printf(TEXT("It is not asked again, since %s."), *ReasonOf(End)));
	}
	const double OpenSeconds = Now - (OpenedAt >= 0 ? OpenedAt : PhaseBegan);
	const bool bGood = EventsOfTry > 0 || (bOpened && OpenSeconds >= CorvaneFollowMachine::SecondsOfGoodStream);
	IdleInARow = bGood ? 0 : IdleInARow + 1;
	ClosedInARow = bOpened ? 0 : ClosedInARow + 1;
	if (Options.Attempts > 0 && ClosedInARow >= Options.Attempts)
	{
		return Close(Now, OutcomeOf(End), FString::Printf(TEXT("Given up after %d tries: %s."), ClosedInARow, *ReasonOf(End)));
	}
	FCorvaneFollowStep Step = Do(EPhase::Waiting, Now, ECorvaneFollowAction::Wait);
	Step.WaitSeconds = WaitAfter(End);
	return Step;
}

FCorvaneFollowStep FCorvaneFollowMachine::CloseForGood(double Now, ECorvaneExchangeEnd End)
{
	if (End == ECorvaneExchangeEnd::Done)
	{
		return Close(Now, ECorvaneTransferOutcome::Ended, TEXT("The stream came to its end."));
	}
	const FString Reason = End == ECorvaneExchangeEnd::StoppedByUs
							   ? FString::Printf(TEXT("its events were not taken for %d seconds"), CorvaneFollow::PatienceSeconds)
							   : CorvaneTryEnd::ReasonOf(End);
	return Close(Now, CorvaneTryEnd::OutcomeOf(End), TEXT("The stream broke off: ") + Reason + TEXT("."));
}

ECorvaneTransferOutcome FCorvaneFollowMachine::OutcomeOf(const FCorvaneFollowTryEnd& End) const
{
	return End.Exchange.bAnswerIsWhole ? ECorvaneTransferOutcome::ServerError : CorvaneTryEnd::OutcomeOf(End.Exchange.End);
}

FString FCorvaneFollowMachine::ReasonOf(const FCorvaneFollowTryEnd& End) const
{
	return End.Exchange.bAnswerIsWhole ? FString::Printf(TEXT("the server answered with status %d"), End.Exchange.Answer.Code)
									   : CorvaneTryEnd::ReasonOf(End.Exchange.End);
}

double FCorvaneFollowMachine::WaitAfter(const FCorvaneFollowTryEnd& End) const
{
	const double Wait = ServerRetry >= 0 ? ServerRetry : Options.ReconnectSeconds;
	// A server that asks for no wait at all, and then brings nothing, is not asked without end:
	const double First = FMath::Max<double>(Wait, Options.ReconnectSeconds);
	const double Spread = IdleInARow > 0 ? CorvaneRetry::Backoff(IdleInARow, First, Options.LongestWaitSeconds, End.Random) : 0;
	const double Asked = CorvaneTryEnd::WaitAskedFor(End.Exchange.Answer, End.NowUtc);
	return FMath::Min<double>(FMath::Max<double>(Wait + Spread, Asked), CorvaneFollowMachine::MostServerSeconds);
}

FCorvaneFollowStep FCorvaneFollowMachine::OnWaitOver(double Now)
{
	return Phase == EPhase::Waiting ? Do(EPhase::Preparing, Now, ECorvaneFollowAction::Prepare) : FCorvaneFollowStep();
}

FCorvaneFollowStep FCorvaneFollowMachine::Pause(double Now)
{
	if (bWantsPause || IsEnding() || Phase == EPhase::New)
	{
		return {};
	}
	bWantsPause = true;
	if (Phase == EPhase::Asking && !bStopping)
	{
		bStopping = true;
		return {ECorvaneFollowAction::Stop};
	}
	return Phase == EPhase::Waiting ? Do(EPhase::Paused, Now, ECorvaneFollowAction::None) : FCorvaneFollowStep();
}

FCorvaneFollowStep FCorvaneFollowMachine::Continue(double Now)
{
	bWantsPause = false;
	if (Phase != EPhase::Paused)
	{
		return {};
	}
	return bPrepared ? Ask(Now) : Do(EPhase::Preparing, Now, ECorvaneFollowAction::Prepare);
}

FCorvaneFollowStep FCorvaneFollowMachine::Cancel(double Now)
{
	return EndWith(Now, ECorvaneTransferOutcome::Cancelled, TEXT("It was cancelled."));
}

FCorvaneFollowStep FCorvaneFollowMachine::EndOfProgram(double Now)
{
	return EndWith(Now, ECorvaneTransferOutcome::Ended, TEXT("The program ended."));
}

FCorvaneFollowStep FCorvaneFollowMachine::EndWith(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence)
{
	if (Phase == EPhase::New || IsEnding())
	{
		return {};
	}
	if (Phase == EPhase::Waiting || Phase == EPhase::Paused)
	{
		return Close(Now, Outcome, Sentence);
	}
	WantedEnd = Outcome;
	WantedSentence = Sentence;
	return {Phase == EPhase::Asking ? ECorvaneFollowAction::Stop : ECorvaneFollowAction::None};
}

FCorvaneFollowStep FCorvaneFollowMachine::Close(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence)
{
	Report.Outcome = Outcome;
	Report.Sentence = Sentence;
	bWantsPause = false;
	return Do(EPhase::Over, Now, ECorvaneFollowAction::Tell);
}
