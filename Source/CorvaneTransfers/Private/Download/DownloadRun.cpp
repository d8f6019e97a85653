#include "Download/DownloadRun.h"

#include "Attempts/Address.h"
#include "Attempts/HttpDate.h"
#include "Download/DownloadOptions.h"
#include "Download/DownloadReceiver.h"
#include "HAL/PlatformTime.h"
#include "Math/UnrealMathUtility.h"

namespace CorvaneDownloadRun
{
	static constexpr float ProgressInterval = 0.1f;

	static double Now()
	{
		return FPlatformTime::Seconds();
	}

	static FCorvaneDownloadOpened Translate(const FCorvaneOpenedPart& Part)
	{
		FCorvaneDownloadOpened Opened;
		Opened.Failure = Part.Result.Failure;
		Opened.Sentence = Part.Result.Sentence;
		Opened.Length = Part.Length;
		Opened.Version = FCorvaneVersion::FromDisk(Part.Source.ETag, Part.Source.LastModified);
		Opened.Total = Part.Source.Total;
		Opened.bWholeAlready = Part.bWholeAlready;
		return Opened;
	}

	static FCorvaneDownloadFinished Translate(const FCorvaneFinished& Part)
	{
		FCorvaneDownloadFinished Finished;
		Finished.Outcome = Part.Result.IsOk() ? ECorvaneTransferOutcome::Succeeded : Part.Result.Failure;
		Finished.Sentence = Part.Result.Sentence;
		Finished.Hash = Part.Hash;
		return Finished;
	}
} // namespace CorvaneDownloadRun

FCorvaneDownloadRun::FCorvaneDownloadRun(const FString& InURL, const FString& InTarget, const FCorvaneDownloadOptions& InOptions,
	FTell InTellEnd, TFunction<void()> InTellProgress, const TSharedRef<FCorvaneRoute>& InRoute)
	: URL(InURL)
	, Target(InTarget)
	, Options(InOptions)
	, EndTeller(MoveTemp(InTellEnd))
	, ProgressTeller(MoveTemp(InTellProgress))
	, Machine(InURL, InTarget, InOptions)
	, Route(InRoute)
{
}

void FCorvaneDownloadRun::Post(TUniqueFunction<void(FCorvaneDownloadRun&)> Letter)
{
	Mailbox->PostTo(AsShared(), MoveTemp(Letter));
}

void FCorvaneDownloadRun::Start()
{
	CorvaneRunningTransfers::Add(AsShared());
	Files->WhenWritingFails(
		[Weak = TWeakPtr<FCorvaneDownloadRun>(AsShared())]
		{
			if (const TSharedPtr<FCorvaneDownloadRun> Self = Weak.Pin())
			{
				Self->Post([](FCorvaneDownloadRun& Run) { Run.Stop(); });
			}
		});
	Machine.LimitParts(Pace.IsValid() ? Pace->PartBytes(0) : 0);
	const bool bHashIsReadable = FCorvaneHashWish::Parse(Options.Hash, Hash);
	const FString WayFault = Route->FindFault();
	const FCorvaneDownloadStep First = Machine.Start(
		CorvaneDownloadRun::Now(), WayFault.IsEmpty() ? CorvaneDownload::FindFault(URL, Target, Options, bHashIsReadable) : WayFault);
	Post([First](FCorvaneDownloadRun& Self) { Self.Follow(First); }); // nothing is told inside this call
}

void FCorvaneDownloadRun::Pause()
{
	Follow(Machine.Pause(CorvaneDownloadRun::Now()));
}

void FCorvaneDownloadRun::Continue()
{
	Follow(Machine.Continue(CorvaneDownloadRun::Now()));
}

void FCorvaneDownloadRun::Cancel()
{
	Follow(Machine.Cancel(CorvaneDownloadRun::Now()));
}

void FCorvaneDownloadRun::EndWithProgram()
{
	Follow(Machine.EndOfProgram(CorvaneDownloadRun::Now()));
}

void FCorvaneDownloadRun::Follow(const FCorvaneDownloadStep& Step)
{
	switch (Step.Action)
	{
	case ECorvaneDownloadAction::None:
		return;
	case ECorvaneDownloadAction::Look:
		return Look();
	case ECorvaneDownloadAction::Open:
		return Open();
	case ECorvaneDownloadAction::Ask:
		return Ask(Step.Question);
	case ECorvaneDownloadAction::Stop:
		return Stop();
	case ECorvaneDownloadAction::Wait:
		Files->Secure(); // while there is time
		return Wait(Step.WaitSeconds);
	case ECorvaneDownloadAction::Hold:
		return Files->Secure();
	case ECorvaneDownloadAction::Finish:
		return Finish();
	case ECorvaneDownloadAction::StopFinishing:
		return Files->StopReading();
	case ECorvaneDownloadAction::Close:
		return Files->Close([Self = AsShared()] { Self->PostClosed(); });
	case ECorvaneDownloadAction::Discard:
		return Files->Discard([Self = AsShared()] { Self->PostClosed(); });
	case ECorvaneDownloadAction::Tell:
		return Post([](FCorvaneDownloadRun& Self) { Self.TellEnd(); }); // a cancel of one that waits tells nothing inside its call either
	}
}

void FCorvaneDownloadRun::PostClosed()
{
	Post([](FCorvaneDownloadRun& Self) { Self.Follow(Self.Machine.OnClosed(CorvaneDownloadRun::Now())); });
}

void FCorvaneDownloadRun::Look()
{
	Files->Look(Target,
		[Self = AsShared()](bool bExists, FDateTime Time) {
			Self->Post(
				[bExists, Time](FCorvaneDownloadRun& Run) { Run.Follow(Run.Machine.OnLooked(CorvaneDownloadRun::Now(), bExists, Time)); });
		});
}

void FCorvaneDownloadRun::Open()
{
	Files->Open(Target, CorvaneAddress::WithoutUser(URL), Options.bResume, Hash.Kind,
		[Self = AsShared()](const FCorvaneOpenedPart& Part)
		{
			Self->Post([Opened = CorvaneDownloadRun::Translate(Part)](FCorvaneDownloadRun& Run)
				{ Run.Follow(Run.Machine.OnOpened(CorvaneDownloadRun::Now(), Opened)); });
		});
}

void FCorvaneDownloadRun::Ask(const FCorvaneDownloadQuestion& Question)
{
	bStopWanted = false;
	if (!Pace.IsValid())
	{
		return BeginTry(Question);
	}
	const int64 MostBytes = FMath::Max<int64>(Question.Until - Question.OnDisk, 0);
	PaceNumber = Pace->Ask(MostBytes,
		[Self = AsShared(), Question](const TSharedRef<FCorvanePaceShare>& Given)
		{
			Self->Share = Given;
			Self->BeginTry(Question);
		});
}

void FCorvaneDownloadRun::BeginTry(const FCorvaneDownloadQuestion& Question)
{
	TryBegan = CorvaneDownloadRun::Now();
	if (Question.Compare == 0)
	{
		Files->BeginAttempt();
		return Send(Question, {}, {});
	}
	Files->BeginAttempt(Question.Compare,
		[Self = AsShared(), Question](TArray<uint8>&& Tail, const FCorvaneFileResult& TailRead)
		{
			Self->Post([Question, Tail = MoveTemp(Tail), TailRead](FCorvaneDownloadRun& Run) mutable
				{ Run.Send(Question, MoveTemp(Tail), TailRead); });
		});
}

/** A try that was stopped, or cannot be, before it was sent ends like one that was cancelled. */
void FCorvaneDownloadRun::Send(const FCorvaneDownloadQuestion& Question, TArray<uint8>&& Tail, const FCorvaneFileResult& TailRead)
{
	if (bStopWanted || !TailRead.IsOk())
	{
		FCorvaneAttemptEnd End;
		End.Length = Question.OnDisk;
		End.FileFailure = TailRead.Failure;
		End.FileSentence = TailRead.Sentence;
		return OnSent(End);
	}
	FCorvaneDownloadReceiver::FPlan Plan;
	Plan.Question = Question;
	Plan.Address = CorvaneAddress::WithoutUser(URL);
	Plan.Tail = MoveTemp(Tail);
	Plan.BytesPerSecond = Options.BytesPerSecond;
	Plan.Share = Share;
	const TSharedRef<FCorvaneDownloadReceiver> Taker = MakeShared<FCorvaneDownloadReceiver>(MoveTemp(Plan), Files,
		[Self = AsShared()](const FCorvaneAttemptEnd& End) { Self->Post([End](FCorvaneDownloadRun& Run) { Run.OnSent(End); }); });

	FCorvaneExchangeRequest Asked;
	Asked.URL = URL;
	Asked.Headers = CorvaneDownload::MakeHeaders(Question, Options);
	Asked.SilenceSeconds = static_cast<float>(Options.SilenceSeconds);
	Receiver = Taker;
	Route->Start(Asked, Taker);
	if (ProgressTeller && !ProgressTicker.IsValid())
	{
		ProgressTicker = FTSTicker::GetCoreTicker().AddTicker(
			FTickerDelegate::CreateLambda([Self = AsShared()](float) { return Self->OnProgressTick(); }),
			CorvaneDownloadRun::ProgressInterval);
	}
}

void FCorvaneDownloadRun::OnSent(FCorvaneAttemptEnd End)
{
	Receiver.Reset();
	if (Share.IsValid())
	{
		Share->Settle();
		Share.Reset();
		Machine.LimitParts(Pace->PartBytes(CorvaneDownloadRun::Now() - TryBegan));
	}
	End.Random = FMath::FRand();
	End.NowUtc = FDateTime::UtcNow();
	Follow(Machine.OnAttemptEnded(CorvaneDownloadRun::Now(), End));
}

void FCorvaneDownloadRun::Stop()
{
	bStopWanted = true;
	if (Pace.IsValid())
	{
		Pace->Withdraw(PaceNumber);
	}
	Route->Cancel();
}

void FCorvaneDownloadRun::Wait(double Seconds)
{
	FTSTicker::RemoveTicker(WaitTicker);
	WaitTicker = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda(
														  [Self = AsShared()](float)
														  {
															  Self->Follow(Self->Machine.OnWaitOver(CorvaneDownloadRun::Now()));
															  return false;
														  }),
		static_cast<float>(Seconds));
}

void FCorvaneDownloadRun::Finish()
{
	FCorvaneFinishWish Wish;
	Wish.Hash = Hash;
	Wish.FileTime = Options.bKeepServerTime ? CorvaneHttpDate::Parse(Machine.GetVersion().LastModified) : FDateTime::MinValue();
	Wish.bMayReplace =
		Options.IfTargetExists == ECorvaneIfTargetExists::Replace || Options.IfTargetExists == ECorvaneIfTargetExists::OnlyIfNewer;
	Files->Finish(Wish,
		[Self = AsShared()](const FCorvaneFinished& Part)
		{
			Self->Post([Finished = CorvaneDownloadRun::Translate(Part)](FCorvaneDownloadRun& Run)
				{ Run.Follow(Run.Machine.OnFinished(CorvaneDownloadRun::Now(), Finished)); });
		});
}

FCorvaneTransferReport FCorvaneDownloadRun::GetReport() const
{
	FCorvaneTransferReport Report = Machine.GetReport();
	if (Receiver.IsValid())
	{
		Report.TransferredBytes += Files->BytesOfAttempt();
		Report.TotalBytes = Report.TotalBytes < 0 ? Receiver->ToldTotal() : Report.TotalBytes;
	}
	return Report;
}

bool FCorvaneDownloadRun::OnProgressTick()
{
	const int64 Bytes = Machine.GetReport().TransferredBytes + (Receiver.IsValid() ? Files->BytesOfAttempt() : 0);
	if (!IsOver() && Bytes != ToldBytes)
	{
		ToldBytes = Bytes;
		ProgressTeller();
	}
	return !IsOver();
}

void FCorvaneDownloadRun::TellEnd()
{
	const TSharedRef<FCorvaneDownloadRun> Self = AsShared(); // the list may hold it last
	FTSTicker::RemoveTicker(WaitTicker);
	FTSTicker::RemoveTicker(ProgressTicker);
	CorvaneRunningTransfers::Remove(*this);
	bTold = true;
	const FCorvaneTransferReport& Report = Machine.GetReport();
	UE_LOG(LogTemp, Display, TEXT("Transfer: %s %s, %lld bytes, %d attempts, %d restarts. %s"), *CorvaneAddress::ForLog(URL), *Target,
		Report.TransferredBytes, Report.Attempts, Report.Restarts, *Report.Sentence);
	if (EndTeller)
	{
		EndTeller(Report);
	}
}
