#include "Download/DownloadMachine.h"

#include "Attempts/Address.h"
#include "Pace/Holding.h"

// The way of a download but for what follows an exchange, which stands in DownloadTries.cpp.

FCorvaneDownloadMachine::FCorvaneDownloadMachine(const FString& URL, const FString& InTarget, const FCorvaneDownloadOptions& InOptions)
	: Target(InTarget)
	, Options(InOptions)
{
	Report.AskedAddress = CorvaneAddress::WithoutUser(URL);
}

void FCorvaneDownloadMachine::MoveTo(EPhase Next, double Now)
{
	if (Phase == EPhase::Waiting)
	{
		Report.SecondsWaited += Now - PhaseBegan;
	}
	else if (Phase != EPhase::New && Phase != EPhase::Paused)
	{
		Report.SecondsWorked += Now - PhaseBegan;
	}
	Phase = Next;
	PhaseBegan = Now;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Do(EPhase Next, double Now, ECorvaneDownloadAction Action)
{
	MoveTo(Next, Now);
	FCorvaneDownloadStep Step;
	Step.Action = Action;
	return Step;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Start(double Now, const FString& Fault)
{
	if (Phase != EPhase::New)
	{
		return {};
	}
	if (!Fault.IsEmpty())
	{
		return Fail(Now, ECorvaneTransferOutcome::Refused, Fault);
	}
	if (IsToEnd())
	{
		return EndAsWanted(Now);
	}
	return Options.IfTargetExists == ECorvaneIfTargetExists::Replace ? Open(Now) : Do(EPhase::Looking, Now, ECorvaneDownloadAction::Look);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::OnLooked(double Now, bool bTargetExists, const FDateTime& TargetTime)
{
	if (Phase != EPhase::Looking)
	{
		return {};
	}
	if (IsToEnd())
	{
		return EndAsWanted(Now);
	}
	if (bOpen)
	{
		return OnLookedAgain(Now, bTargetExists);
	}
	if (bTargetExists && Options.IfTargetExists == ECorvaneIfTargetExists::Keep)
	{
		return KeepTarget(Now, TEXT("The file is there already; nothing was asked for."));
	}
	if (bTargetExists && Options.IfTargetExists == ECorvaneIfTargetExists::Fail)
	{
		return FailBeforeOpen(Now, ECorvaneTransferOutcome::Refused, TEXT("There is a file of this name already: ") + Target);
	}
	if (bTargetExists && Options.IfTargetExists == ECorvaneIfTargetExists::OnlyIfNewer)
	{
		IfNewerThan = TargetTime;
	}
	return Open(Now);
}

/** The server has nothing newer than the target was; one that has gone since is fetched, however old. */
FCorvaneDownloadStep FCorvaneDownloadMachine::OnLookedAgain(double Now, bool bTargetExists)
{
	if (bTargetExists)
	{
		return KeepTarget(Now, TEXT("The server has nothing newer than the file that is there."));
	}
	IfNewerThan = FDateTime::MinValue();
	return GoOn(Now, 0);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::OnRestFound(double Now, int64 Bytes, int64 InTotal)
{
	if (Phase != EPhase::Looking || Report.Outcome == ECorvaneTransferOutcome::Running)
	{
		return {};
	}
	Length = Report.TakenOverBytes = Bytes;
	Report.TotalBytes = InTotal;
	return Tell(Now);
}

/** Most part files are new: their first try need not come back here, and wait for a frame, between the file and the request. */
FCorvaneDownloadStep FCorvaneDownloadMachine::Open(double Now)
{
	FCorvaneDownloadStep Step = Do(EPhase::Opening, Now, ECorvaneDownloadAction::Open);
	Step.bAskIfNew = !bWantsPause && !IsToEnd();
	Step.Question = Question = MakeQuestion();
	Report.Attempts = Step.bAskIfNew ? 1 : 0;
	return Step;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::OnOpened(double Now, const FCorvaneDownloadOpened& Opened)
{
	if (Phase != EPhase::Opening)
	{
		return {};
	}
	Report.Attempts = 0;
	Length = Mark = Report.TakenOverBytes = Opened.Length;
	Total = Report.TotalBytes = Opened.Total;
	Version = Opened.Version;
	if (Opened.Failure != ECorvaneTransferOutcome::Running)
	{
		return Fail(Now, Opened.Failure, Opened.Sentence);
	}
	bOpen = true;
	if (Opened.bWholeAlready)
	{
		return Finish(Now); // an earlier run got so far; its journal, and the hash, are still to be dealt with
	}
	if (IsToEnd())
	{
		return EndAsWanted(Now);
	}
	const int64 Expected = Options.ExpectedSize;
	if (Length > 0 && Expected >= 0 && (Length > Expected || (Total >= 0 && Total != Expected)))
	{
		return StartOver(Now, TEXT("what is on disk is not of the size that is expected"), ECorvaneTransferOutcome::WrongSize);
	}
	return GoOn(Now, 0);
}

FCorvaneDownloadQuestion FCorvaneDownloadMachine::MakeQuestion() const
{
	FCorvaneDownloadQuestion Next;
	Next.ExpectedSize = Options.ExpectedSize;
	const bool bKnowsFile = !bFromStart && !bPacked;
	if (bKnowsFile)
	{
		Next.Total = Total;
		Next.Version = Version;
	}
	if (bKnowsFile && Length > 0)
	{
		Next.OnDisk = Length;
		Next.Compare = Version.ForIfRange().IsEmpty() ? FMath::Min<int64>(CorvaneDownload::TailBytes, Length) : 0;
	}
	if (Next.OnDisk == 0 || !bIsNewer)
	{
		Next.IfNewerThan = IfNewerThan;
	}
	const int64 Part = PartBytes(Next.Compare);
	Next.bRange = Part > 0 || Next.OnDisk > 0;
	Next.Until = Part > 0 ? Next.OnDisk + Part : -1;
	return Next;
}

/** @return new bytes of the next part, by its own limit and that of its queue; 0 = all that there are. */
int64 FCorvaneDownloadMachine::PartBytes(int64 Compare) const
{
	const int64 Own = Options.BytesPerSecond > 0 ? CorvanePace::PartBytes(Options.BytesPerSecond) : MAX_int64;
	const int64 Shared = MostOfPart > 0 ? MostOfPart : MAX_int64;
	const int64 Part = FMath::Min(Own, Shared);
	if (bNoRanges || Part == MAX_int64)
	{
		return 0;
	}
	return Compare > 0 ? FMath::Max(Part, CorvaneDownload::PartBytesWithTail) : Part;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Ask(double Now)
{
	Question = MakeQuestion();
	bStoppedLast = bStopping;
	bStopping = false;
	++Report.Attempts;
	FCorvaneDownloadStep Step = Do(EPhase::Asking, Now, ECorvaneDownloadAction::Ask);
	Step.Question = Question;
	return Step;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::GoOn(double Now, double Seconds)
{
	if (bWantsPause)
	{
		return Do(EPhase::Paused, Now, ECorvaneDownloadAction::Hold);
	}
	if (Seconds <= 0)
	{
		return Ask(Now);
	}
	FCorvaneDownloadStep Step = Do(EPhase::Waiting, Now, ECorvaneDownloadAction::Wait);
	Step.WaitSeconds = Seconds;
	return Step;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::OnWaitOver(double Now)
{
	return Phase == EPhase::Waiting ? Ask(Now) : FCorvaneDownloadStep();
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Finish(double Now)
{
	Total = Report.TotalBytes = Length;
	if (Options.ExpectedSize >= 0 && Length != Options.ExpectedSize)
	{
		return Fail(Now, ECorvaneTransferOutcome::WrongSize,
			FString::Printf(TEXT("The file has %lld bytes, %lld were expected."), Length, Options.ExpectedSize), false);
	}
	return Do(EPhase::Finishing, Now, ECorvaneDownloadAction::Finish);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::OnFinished(double Now, const FCorvaneDownloadFinished& Finished)
{
	if (Phase != EPhase::Finishing)
	{
		return {};
	}
	bOpen = false; // whatever came of it
	Report.Hash = Finished.Hash;
	Length = Finished.Outcome == ECorvaneTransferOutcome::Succeeded ? Length : Finished.KeptBytes;
	if (Finished.Outcome == ECorvaneTransferOutcome::Cancelled)
	{
		return EndAsWanted(Now);
	}
	if (Finished.Outcome != ECorvaneTransferOutcome::Succeeded)
	{
		return Fail(Now, Finished.Outcome, Finished.Sentence, Finished.Outcome != ECorvaneTransferOutcome::WrongHash);
	}
	Report.Outcome = ECorvaneTransferOutcome::Succeeded;
	Report.Sentence = FString::Printf(TEXT("The file is there: %lld bytes."), Length);
	Length = 0; // beside the target
	return LetGo(Now, true);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::KeepTarget(double Now, const FString& Sentence)
{
	Report.Outcome = ECorvaneTransferOutcome::Succeeded;
	Report.Sentence = Sentence;
	Report.bTargetKept = true;
	return LetGo(Now, false);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Fail(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence, bool bKeepBytes)
{
	Report.Outcome = Outcome;
	Report.Sentence = Sentence;
	return LetGo(Now, bKeepBytes);
}

/** What an earlier run has left is told of, too. */
FCorvaneDownloadStep FCorvaneDownloadMachine::FailBeforeOpen(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence)
{
	Report.Outcome = Outcome;
	Report.Sentence = Sentence;
	return Options.bResume ? Do(EPhase::Looking, Now, ECorvaneDownloadAction::LookForRest) : Tell(Now);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::LetGo(double Now, bool bKeepBytes)
{
	const bool bSucceeded = Report.Outcome == ECorvaneTransferOutcome::Succeeded && !Report.bTargetKept;
	// Without a byte of this run, or one that it took over, there may be some of another address: Close tells those from an empty file.
	const bool bDiscard = !bSucceeded && Length > 0 && (!bKeepBytes || bPacked);
	Length = bDiscard ? 0 : Length;
	if (!bOpen)
	{
		return Tell(Now);
	}
	return Do(EPhase::Closing, Now, bDiscard ? ECorvaneDownloadAction::Discard : ECorvaneDownloadAction::Close);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::OnClosed(double Now, int64 KeptBytes)
{
	if (Phase != EPhase::Closing)
	{
		return {};
	}
	Length = KeptBytes;
	return Tell(Now);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Tell(double Now)
{
	if (Length > 0 && Report.Outcome != ECorvaneTransferOutcome::Succeeded)
	{
		Report.BytesLeft = Length;
		Report.HowToGoOn = FString::Printf(TEXT("%lld bytes are kept beside the target; the same download goes on with them."), Length);
	}
	return Do(EPhase::Over, Now, ECorvaneDownloadAction::Tell);
}

FCorvaneDownloadStep FCorvaneDownloadMachine::StopAsking()
{
	FCorvaneDownloadStep Step;
	Step.Action = ECorvaneDownloadAction::Stop;
	bStopping = true;
	return Step;
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Pause(double Now)
{
	switch (Phase)
	{
	case EPhase::Looking:
		bWantsPause = true;
		return {};
	case EPhase::Opening:
	case EPhase::Asking:
		bWantsPause = true;
		return StopAsking();
	case EPhase::Waiting:
		bWantsPause = true;
		return GoOn(Now, 0);
	default:
		return {}; // it is paused, or all there
	}
}

FCorvaneDownloadStep FCorvaneDownloadMachine::Continue(double Now)
{
	bWantsPause = false;
	return Phase == EPhase::Paused ? Ask(Now) : FCorvaneDownloadStep();
}

FCorvaneDownloadStep FCorvaneDownloadMachine::AskInParts()
{
	const bool bAsksForAll = (Phase == EPhase::Opening || Phase == EPhase::Asking) && Question.Until < 0;
	return bAsksForAll && PartBytes(0) > 0 ? StopAsking() : FCorvaneDownloadStep();
}

FCorvaneDownloadStep FCorvaneDownloadMachine::EndWith(double Now, ECorvaneTransferOutcome Outcome)
{
	const bool bTooLate = Phase == EPhase::Closing || Phase == EPhase::Over;
	if (bTooLate || IsToEnd())
	{
		return {};
	}
	WantedEnd = Outcome;
	if (Phase == EPhase::Opening || Phase == EPhase::Asking)
	{
		return StopAsking();
	}
	if (Phase == EPhase::Finishing)
	{
		FCorvaneDownloadStep Step;
		Step.Action = ECorvaneDownloadAction::StopFinishing;
		return Step;
	}
	const bool bIdle = Phase == EPhase::Waiting || Phase == EPhase::Paused;
	return bIdle ? EndAsWanted(Now) : FCorvaneDownloadStep();
}

FCorvaneDownloadStep FCorvaneDownloadMachine::EndAsWanted(double Now)
{
	const bool bEnded = WantedEnd == ECorvaneTransferOutcome::Ended;
	const FString Sentence = bEnded ? TEXT("The program came to its end.") : TEXT("The download was cancelled.");
	const bool bBeforeOpen = !bOpen && (Phase == EPhase::New || Phase == EPhase::Looking);
	return bBeforeOpen ? FailBeforeOpen(Now, WantedEnd, Sentence) : Fail(Now, WantedEnd, Sentence);
}
