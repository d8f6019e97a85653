#include "Attempts/Address.h"
#include "Attempts/RetryPolicy.h"
#include "Attempts/TryEnd.h"
#include "Download/DownloadMachine.h"
#include "Pace/Holding.h"

// What follows an exchange.

namespace CorvaneDownloadTries
{
	/** A server whose file changes with every request is not asked for ever. */
	static constexpr int32 MostRestarts = 3;

	static FString SentenceOf(const FString& Reason)
	{
		return TEXT("Not downloaded: ") + Reason + TEXT(".");
	}

	static bool BodyIsMissing(const FCorvaneDownloadJudgement& Judged, const FCorvaneAttemptEnd& End)
	{
		return Judged.Verdict == ECorvaneDownloadVerdict::StartOverWithThis && !End.bStartedOver;
	}

	/** Whether nothing has told yet that what is on disk belongs to the server's file. */
	static bool IsUncompared(const FCorvaneDownloadJudgement& Judged, const FCorvaneAttemptEnd& End)
	{
		return Judged.Verdict == ECorvaneDownloadVerdict::CompareThenAppend && !End.bTailPassed;
	}

	static bool IsWhole(const FCorvaneDownloadJudgement& Judged, const FCorvaneAttemptEnd& End)
	{
		const bool bAllOfUnknown = Judged.Total < 0 && End.Length >= Judged.LeastBytes && End.Exchange.End == ECorvaneExchangeEnd::Done &&
								   End.Exchange.Answer.Code != 206;
		const bool bIsOfTotal = Judged.Total >= 0 && End.Length == Judged.Total;
		return !BodyIsMissing(Judged, End) && !IsUncompared(Judged, End) && (bAllOfUnknown || bIsOfTotal);
	}
} // namespace CorvaneDownloadTries

bool CorvaneDownload::BringsWholeFile(
	const FCorvaneDownloadQuestion& Question, const FCorvaneDownloadJudgement& Judged, const FCorvaneAttemptEnd& End)
{
	const bool bIsOfUse = End.FileFailure == ECorvaneTransferOutcome::Running && End.Exchange.Failure == ECorvaneTransferOutcome::Running &&
						  End.Exchange.bAnswerIsWhole && !End.bTailDiffers && !End.bTooLong;
	const bool bIsOfSize = Question.ExpectedSize < 0 || End.Length == Question.ExpectedSize;
	return bIsOfUse && bIsOfSize && Judged.TakesBody() && CorvaneDownloadTries::IsWhole(Judged, End);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::OnAttemptEnded(double Now, const FCorvaneAttemptEnd& End)
{
	if (Phase != EPhase::Opening && Phase != EPhase::Asking)
	{
		return {};
	}
	bOpen = true;
	Count(End);
	if (End.bFinished)
	{
		return FollowFinished(Now, End);
	}
	if (IsToEnd())
	{
		return EndAsWanted(Now);
	}
	if (End.FileFailure != ECorvaneTransferOutcome::Running)
	{
		return Fail(Now, End.FileFailure, End.FileSentence);
	}
	if (End.Exchange.Failure != ECorvaneTransferOutcome::Running)
	{
		return Fail(Now, End.Exchange.Failure, End.Exchange.Sentence);
	}
	if (End.Exchange.End == ECorvaneExchangeEnd::NotSent)
	{
		return Fail(Now, ECorvaneTransferOutcome::Refused, TEXT("The HTTP module does not send this request."));
	}
	if (End.Length < Question.OnDisk && !End.bStartedOver)
	{
		--Report.Attempts; // nothing was asked
		return GoOn(Now, 0);
	}
	return End.Exchange.bAnswerIsWhole ? FollowAnswer(Now, End) : FollowBreak(Now, End);
}

void FCorvaneDownloadMachine::Count(const FCorvaneAttemptEnd& End)
{
	Report.TransferredBytes += End.Written;
	if (End.Exchange.Answer.Code != 0)
	{
		Report.Code = End.Exchange.Answer.Code;
		Report.ReachedAddress = CorvaneAddress::WithoutUser(End.Exchange.ReachedURL);
	}
	bThrewAway = End.bStartedOver && Length > 0 && !bFromStart;
	if (End.bStartedOver)
	{
		Mark = Report.TakenOverBytes = 0;
		bFromStart = false;
	}
	Length = End.Length;
	bGotNew = Length > Mark;
	Mark = FMath::Max(Mark, Length);
	FailuresInARow = bGotNew ? 0 : FailuresInARow;
}

/** Whatever was wanted meanwhile came too late. */
FCorvaneDownloadStep FCorvaneDownloadMachine::FollowFinished(double Now, const FCorvaneAttemptEnd& End)
{
	TakeOver(End, CorvaneDownload::JudgeAnswer(Question, End.Exchange.Answer));
	Finish(Now);
	return OnFinished(Now, End.Finished);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::FollowAnswer(double Now, const FCorvaneAttemptEnd& End)
{
	using namespace CorvaneDownloadTries;
	const FCorvaneDownloadJudgement Judged = CorvaneDownload::JudgeAnswer(Question, End.Exchange.Answer);
	switch (Judged.Verdict)
	{
	case ECorvaneDownloadVerdict::StartOverAgain:
		bNoRanges |= Question.OnDisk == 0; // such as of an empty file
		return StartOver(Now, Judged.Reason, ECorvaneTransferOutcome::Changed);
	case ECorvaneDownloadVerdict::AllThere:
		return Finish(Now);
	case ECorvaneDownloadVerdict::WaitAndGoOn:
		return Retry(Now, End, ECorvaneTransferOutcome::ServerError, Judged.Reason);
	case ECorvaneDownloadVerdict::Fail:
		return Fail(Now, Judged.Outcome, SentenceOf(Judged.Reason));
	case ECorvaneDownloadVerdict::Unchanged:
		return Do(EPhase::Looking, Now, ECorvaneDownloadAction::Look); // whether that still is there
	default:
		TakeOver(End, Judged);
		return FollowBody(Now, End, Judged);
	}
}

/** What the answer told of the file holds from now on, if its body has come to the disk. */
void FCorvaneDownloadMachine::TakeOver(const FCorvaneAttemptEnd& End, const FCorvaneDownloadJudgement& Judged)
{
	if (CorvaneDownloadTries::BodyIsMissing(Judged, End))
	{
		return;
	}
	bIsNewer = true;
	Version = Judged.Version;
	Total = Report.TotalBytes = Judged.Total;
	if (bThrewAway)
	{
		bChangedLast = Judged.bChanged;
		NoteRestart(bPacked ? FString(TEXT("the server packs the file on the way, so nothing can go on in its middle")) : Judged.Reason);
	}
	bPacked = End.Exchange.Answer.bEncoded;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::FollowBody(double Now, const FCorvaneAttemptEnd& End, const FCorvaneDownloadJudgement& Judged)
{
	using namespace CorvaneDownloadTries;
	if (End.bTailDiffers)
	{
		return StartOver(Now, TEXT("the end of what is on disk is not what the server has there"), ECorvaneTransferOutcome::Changed);
	}
	if (End.bTooLong)
	{
		return StartOver(Now, TEXT("the server sent more bytes than it had told"), ECorvaneTransferOutcome::WrongSize);
	}
	if (IsWhole(Judged, End))
	{
		return Finish(Now);
	}
	if (RestartsOfServer > MostRestarts && !bStopping)
	{
		const ECorvaneTransferOutcome Outcome =
			bChangedLast ? ECorvaneTransferOutcome::Changed : CorvaneTryEnd::OutcomeOf(End.Exchange.End);
		return Fail(Now, Outcome, SentenceOf(Report.RestartReasons.Last()));
	}
	if (BodyIsMissing(Judged, End) || End.Exchange.End != ECorvaneExchangeEnd::Done)
	{
		return FollowBreak(Now, End);
	}
	if (!bGotNew)
	{
		return Retry(Now, End, ECorvaneTransferOutcome::Dropped, TEXT("the server sends no more of the file, although it is not whole"));
	}
	return GoOn(Now, CorvanePace::WaitAfter(End.Exchange.BodyBytes, Now - PhaseBegan, Options.BytesPerSecond));
}

FCorvaneDownloadStep FCorvaneDownloadMachine::FollowBreak(double Now, const FCorvaneAttemptEnd& End)
{
	using namespace CorvaneDownloadTries;
	if (bStopping)
	{
		return GoOn(Now, 0); // paused, and maybe continued since
	}
	return Retry(Now, End, CorvaneTryEnd::OutcomeOf(End.Exchange.End), CorvaneTryEnd::ReasonOf(End.Exchange.End));
}

void FCorvaneDownloadMachine::NoteRestart(const FString& Reason)
{
	++Report.Restarts;
	RestartsOfServer += bStoppedLast ? 0 : 1;
	Report.RestartReasons.Add(Reason);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::StartOver(double Now, const FString& Reason, ECorvaneTransferOutcome Outcome)
{
	using namespace CorvaneDownloadTries;
	NoteRestart(Reason);
	bFromStart = true;
	return RestartsOfServer > MostRestarts ? Fail(Now, Outcome, SentenceOf(Reason)) : GoOn(Now, 0);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Retry(
	double Now, const FCorvaneAttemptEnd& End, ECorvaneTransferOutcome Outcome, const FString& Reason)
{
	using namespace CorvaneDownloadTries;
	FailuresInARow += bGotNew ? 0 : 1;
	if (FailuresInARow >= Options.Attempts)
	{
		return Fail(Now, Outcome, SentenceOf(Reason));
	}
	const double Asked = CorvaneTryEnd::WaitAskedFor(End.Exchange.Answer, End.NowUtc);
	if (Asked > Options.LongestWaitSeconds)
	{
		return Fail(Now, Outcome,
			SentenceOf(Reason + FString::Printf(
									TEXT(" and wants to be left alone for %.0f seconds, which is longer than the longest wait"), Asked)));
	}
	const double Backoff = CorvaneRetry::Backoff(FailuresInARow, Options.FirstWaitSeconds, Options.LongestWaitSeconds, End.Random);
	return GoOn(Now, FMath::Min(FMath::Max(Asked, 0.0) + Backoff, Options.LongestWaitSeconds));
}
