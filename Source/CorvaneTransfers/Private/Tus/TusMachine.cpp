#include "Tus/TusMachine.h"

#include "Attempts/Address.h"

// The way of an upload but for what follows an exchange, which stands in TusTries.cpp.

FCorvaneTusMachine::FCorvaneTusMachine(const FString& InURL, const FCorvaneResumableOptions& InOptions, const FCorvaneTusWishes& InWishes)
	: URL(InURL)
	, Options(InOptions)
	, Wishes(InWishes)
	, bFirstPieceAtOnce(InOptions.bFirstPieceAtOnce)
	, Checksum(InWishes.PieceChecksum)
{
	Report.AskedAddress = CorvaneAddress::WithoutUser(URL);
}

void FCorvaneTusMachine::MoveTo(EPhase NewPhase, double Now)
{
	if (Phase == EPhase::Waiting)
	{
		Report.SecondsWaited += Now - PhaseBegan;
	}
	else if (Phase != EPhase::New && Phase != EPhase::Paused)
	{
		Report.SecondsWorked += Now - PhaseBegan;
	}
	Phase = NewPhase;
	PhaseBegan = Now;
}

FCorvaneTusStep FCorvaneTusMachine::Do(EPhase NewPhase, double Now, ECorvaneTusAction Action)
{
	MoveTo(NewPhase, Now);
	FCorvaneTusStep Step;
	Step.Action = Action;
	return Step;
}

FCorvaneTusStep FCorvaneTusMachine::Start(double Now)
{
	if (Phase != EPhase::New)
	{
		return {};
	}
	if (!Wishes.Fault.IsEmpty())
	{
		return Fail(Now, ECorvaneTransferOutcome::Refused, Wishes.Fault);
	}
	const bool bOver = WantedEnd != ECorvaneTransferOutcome::Running;
	return bOver ? EndAsWanted(Now) : Do(EPhase::Opening, Now, ECorvaneTusAction::Open);
}

FCorvaneTusStep FCorvaneTusMachine::OnOpened(double Now, const FCorvaneTusOpened& Opened)
{
	if (Phase != EPhase::Opening)
	{
		return {};
	}
	if (Opened.Failure == ECorvaneTransferOutcome::Cancelled && WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	if (Opened.Failure != ECorvaneTransferOutcome::Running)
	{
		return Fail(Now, Opened.Failure, Opened.Sentence);
	}
	bOpen = true;
	Size = Report.TotalBytes = Opened.Size;
	Report.Hash = Opened.Hash;
	Upload = Opened.Upload;
	if (WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	if (!Opened.WhyFromStart.IsEmpty())
	{
		return StartOver(Now, Opened.WhyFromStart);
	}
	const int64 Expires = Upload.Expires.GetTicks();
	if (Expires > 0 && Expires <= Opened.NowUtc.GetTicks())
	{
		return StartOver(Now, TEXT("the server keeps an upload only for so long"));
	}
	bTookOver = !Upload.Address.IsEmpty();
	return GoOn(Now, NextAfterFailure());
}

FCorvaneTusStep FCorvaneTusMachine::GoOn(double Now, ENext NewNext, double Seconds)
{
	Next = NewNext;
	if (bWantsPause)
	{
		Next = NextAfterFailure(); // who knows how long it takes
		return Do(EPhase::Paused, Now, ECorvaneTusAction::None);
	}
	if (Seconds <= 0)
	{
		return DoNext(Now);
	}
	FCorvaneTusStep Step = Do(EPhase::Waiting, Now, ECorvaneTusAction::Wait);
	Step.WaitSeconds = Seconds;
	return Step;
}

FCorvaneTusStep FCorvaneTusMachine::DoNext(double Now)
{
	++Report.Attempts;
	bStopping = false;
	switch (Next)
	{
	case ENext::Create:
		return Create(Now);
	case ENext::Ask:
		return Do(EPhase::Asking, Now, ECorvaneTusAction::Ask);
	default:
		return Send(Now);
	}
}

FCorvaneTusStep FCorvaneTusMachine::Create(double Now)
{
	FCorvaneTusStep Step = Do(EPhase::Creating, Now, ECorvaneTusAction::Create);
	Sent = Step;
	if (bFirstPieceAtOnce)
	{
		TakePiece(Step);
	}
	return Step;
}

FCorvaneTusStep FCorvaneTusMachine::Send(double Now)
{
	FCorvaneTusStep Step = Do(EPhase::Sending, Now, ECorvaneTusAction::Send);
	TakePiece(Step);
	return Step;
}

void FCorvaneTusMachine::TakePiece(FCorvaneTusStep& Step)
{
	Step.Start = Offset;
	const int64 Most = MostOfPiece > 0 ? FMath::Min(MostOfPiece, Options.PieceBytes) : Options.PieceBytes;
	Step.Bytes = FMath::Min(Most, Size - Offset);
	Step.Checksum = Checksum;
	Sent = Step;
}

FCorvaneTusStep FCorvaneTusMachine::OnBegun(double Now, ECorvaneTransferOutcome Failure, const FString& Sentence)
{
	if (Phase != EPhase::Beginning)
	{
		return {};
	}
	if (WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return EndAsWanted(Now);
	}
	if (Failure != ECorvaneTransferOutcome::Running)
	{
		return Fail(Now, Failure, Sentence);
	}
	return Offset == Size ? Succeed(Now) : GoOn(Now, Next);
}

FCorvaneTusStep FCorvaneTusMachine::OnWaitOver(double Now)
{
	return Phase == EPhase::Waiting ? DoNext(Now) : FCorvaneTusStep();
}

FCorvaneTusStep FCorvaneTusMachine::Succeed(double Now)
{
	Report.Outcome = ECorvaneTransferOutcome::Succeeded;
	Report.Sentence = FString::Printf(TEXT("The server has the file: %lld bytes."), Size);
	Report.ReachedAddress = Upload.Address; // also where nothing was sent to it
	return LetGo(Now, false);
}

FCorvaneTusStep FCorvaneTusMachine::Fail(double Now, ECorvaneTransferOutcome Outcome, const FString& Sentence, bool bKeepUpload)
{
	Report.Outcome = Outcome;
	Report.Sentence = Sentence;
	if (bKeepUpload && Offset > 0)
	{
		Report.BytesLeft = Offset;
		Report.HowToGoOn = FString::Printf(TEXT("The server has %lld bytes; the same upload goes on behind them."), Offset);
	}
	return LetGo(Now, bKeepUpload);
}

FCorvaneTusStep FCorvaneTusMachine::LetGo(double Now, bool bKeepUpload)
{
	if (!bOpen)
	{
		return Tell(Now);
	}
	return Do(EPhase::Closing, Now, bKeepUpload ? ECorvaneTusAction::Close : ECorvaneTusAction::Discard);
}

FCorvaneTusStep FCorvaneTusMachine::OnClosed(double Now)
{
	return Phase == EPhase::Closing ? Tell(Now) : FCorvaneTusStep();
}

FCorvaneTusStep FCorvaneTusMachine::Tell(double Now)
{
	return Do(EPhase::Over, Now, ECorvaneTusAction::Tell);
}

FCorvaneTusStep FCorvaneTusMachine::StopExchange()
{
	FCorvaneTusStep Step;
	Step.Action = bStopping ? ECorvaneTusAction::None : ECorvaneTusAction::Stop;
	bStopping = true;
	return Step;
}

FCorvaneTusStep FCorvaneTusMachine::Pause(double Now)
{
	switch (Phase)
	{
	case EPhase::Opening:
	case EPhase::Creating: // its answer is the only one to tell where the upload is
	case EPhase::Beginning:
		bWantsPause = true;
		return {};
	case EPhase::Asking:
	case EPhase::Sending:
		bWantsPause = true;
		return StopExchange();
	case EPhase::Waiting:
		bWantsPause = true;
		return GoOn(Now, Next);
	default:
		return {}; // it is paused, or nearly over
	}
}

FCorvaneTusStep FCorvaneTusMachine::Continue(double Now)
{
	bWantsPause = false;
	return Phase == EPhase::Paused ? DoNext(Now) : FCorvaneTusStep();
}

FCorvaneTusStep FCorvaneTusMachine::EndWith(double Now, ECorvaneTransferOutcome Outcome)
{
	const bool bTooLate = Phase == EPhase::Terminating || Phase == EPhase::Closing || Phase == EPhase::Over;
	if (bTooLate || WantedEnd != ECorvaneTransferOutcome::Running)
	{
		return {};
	}
	WantedEnd = Outcome;
	switch (Phase)
	{
	case EPhase::Creating:
	case EPhase::Asking:
	case EPhase::Sending:
		return StopExchange();
	case EPhase::Waiting:
	case EPhase::Paused:
		return EndAsWanted(Now);
	default:
		return {};
	}
}

FCorvaneTusStep FCorvaneTusMachine::EndAsWanted(double Now)
{
	if (WantedEnd == ECorvaneTransferOutcome::Ended)
	{
		return Fail(Now, WantedEnd, TEXT("The program came to its end."));
	}
	if (Options.bTerminateOnCancel && bMayTerminate && !Upload.Address.IsEmpty())
	{
		return Do(EPhase::Terminating, Now, ECorvaneTusAction::Terminate);
	}
	return Fail(Now, WantedEnd, TEXT("The upload was cancelled."));
}
