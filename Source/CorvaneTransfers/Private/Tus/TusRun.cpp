#include "Tus/TusRun.h"

#include "Attempts/Address.h"
#include "HAL/PlatformTime.h"
#include "Math/UnrealMathUtility.h"
#include "Misc/Paths.h"
#include "Tus/TusReceiver.h"
#include "Upload/ContentTypes.h"

namespace CorvaneTusRun
{
	static constexpr float ProgressInterval = 0.1f;

	static double Now()
	{
		return FPlatformTime::Seconds();
	}

	static FCorvaneTusOpened Translate(const FCorvaneTusFound& Found)
	{
		FCorvaneTusOpened Opened;
		Opened.Failure = Found.Result.Failure;
		Opened.Sentence = Found.Result.Sentence;
		Opened.Size = Found.File.Size;
		Opened.Hash = Found.Hash;
		Opened.Upload = Found.Upload;
		Opened.WhyFromStart = Found.WhyFromStart;
		Opened.NowUtc = FDateTime::UtcNow();
		return Opened;
	}

	static FCorvaneTusEnd Failed(const FCorvaneFileResult& Result)
	{
		FCorvaneTusEnd End;
		End.FileFailure = Result.Failure;
		End.FileSentence = Result.Sentence;
		return End;
	}
} // namespace CorvaneTusRun

FCorvaneTusRun::FCorvaneTusRun(const FString& InURL, const FString& InPath, const FCorvaneResumableOptions& InOptions, FTell InTellEnd,
	TFunction<void()> InTellProgress)
	: URL(InURL)
	, Path(InPath)
	, Options(InOptions)
	, Wishes(FCorvaneTusWishes::Read(InURL, InPath, InOptions))
	, EndTeller(MoveTemp(InTellEnd))
	, ProgressTeller(MoveTemp(InTellProgress))
	, Machine(InURL, InOptions, Wishes)
	, Requests(InURL, InOptions)
{
}

void FCorvaneTusRun::Post(TUniqueFunction<void(FCorvaneTusRun&)> Letter)
{
	Mailbox->PostTo(AsShared(), MoveTemp(Letter));
}

void FCorvaneTusRun::Start()
{
	CorvaneRunningTransfers::Add(AsShared());
	const FCorvaneTusStep First = Machine.Start(CorvaneTusRun::Now());
	Post([First](FCorvaneTusRun& Self) { Self.Follow(First); }); // nothing is told inside this call
}

void FCorvaneTusRun::Pause()
{
	Follow(Machine.Pause(CorvaneTusRun::Now()));
}

void FCorvaneTusRun::Continue()
{
	Follow(Machine.Continue(CorvaneTusRun::Now()));
}

void FCorvaneTusRun::Cancel()
{
	Files->StopReading();
	Follow(Machine.Cancel(CorvaneTusRun::Now()));
}

void FCorvaneTusRun::EndWithProgram()
{
	Files->StopReading();
	Follow(Machine.EndOfProgram(CorvaneTusRun::Now()));
}

void FCorvaneTusRun::Follow(const FCorvaneTusStep& Step)
{
	bStopWanted = Step.Action == ECorvaneTusAction::None && bStopWanted;
	switch (Step.Action)
	{
	case ECorvaneTusAction::None:
		return;
	case ECorvaneTusAction::Open:
		return Open();
	case ECorvaneTusAction::Begin:
		return Begin();
	case ECorvaneTusAction::Create:
	case ECorvaneTusAction::Send:
		return SendBytes(Step);
	case ECorvaneTusAction::Ask:
		return Send(Requests.Ask(Machine.GetUpload().Address), nullptr);
	case ECorvaneTusAction::Terminate:
		return Send(Requests.Terminate(Machine.GetUpload().Address), nullptr);
	case ECorvaneTusAction::Stop:
		return Stop();
	case ECorvaneTusAction::Wait:
		return Wait(Step.WaitSeconds);
	case ECorvaneTusAction::Close:
		return Files->Close([Self = AsShared()] { Self->PostClosed(); });
	case ECorvaneTusAction::Discard:
		return Files->Discard([Self = AsShared()] { Self->PostClosed(); });
	case ECorvaneTusAction::Tell:
		return Post([](FCorvaneTusRun& Self) { Self.TellEnd(); }); // a cancel of one that waits tells nothing inside its call either
	}
}

void FCorvaneTusRun::PostClosed()
{
	Post([](FCorvaneTusRun& Self) { Self.Follow(Self.Machine.OnClosed(CorvaneTusRun::Now())); });
}

void FCorvaneTusRun::Open()
{
	FCorvaneTusFiles::FWish Wish;
	Wish.Address = URL;
	Wish.Path = Path;
	Wish.Hash = Wishes.Hash;
	Wish.Folder = Options.JournalFolder;
	Wish.bResume = Options.bResume;
	Files->Open(
		Wish, [Self = AsShared()](const FCorvaneTusFound& Found) { Self->Post([Found](FCorvaneTusRun& Run) { Run.OnFound(Found); }); });
}

void FCorvaneTusRun::OnFound(const FCorvaneTusFound& Found)
{
	File = Found.File;
	Facts.Size = File.Size;
	Facts.Name = FPaths::GetCleanFilename(File.Path);
	Facts.Type = CorvaneContentTypes::Of(File.Path);
	Follow(Machine.OnOpened(CorvaneTusRun::Now(), CorvaneTusRun::Translate(Found)));
}

void FCorvaneTusRun::Begin()
{
	NotedOffset = 0;
	Files->Begin(Machine.GetUpload(),
		[Self = AsShared()](const FCorvaneFileResult& Noted) {
			Self->Post(
				[Noted](FCorvaneTusRun& Run) { Run.Follow(Run.Machine.OnBegun(CorvaneTusRun::Now(), Noted.Failure, Noted.Sentence)); });
		});
}

void FCorvaneTusRun::SendBytes(const FCorvaneTusStep& Step)
{
	if (Step.Bytes == 0 || Step.Checksum == ECorvaneHashKind::None)
	{
		return SendSummed(Step, FString());
	}
	Files->Sum(Step.Start, Step.Bytes, Step.Checksum,
		[Self = AsShared(), Step](const FString& Sum) { Self->Post([Step, Sum](FCorvaneTusRun& Run) { Run.SendSummed(Step, Sum); }); });
}

/** One that was stopped before it was sent ends like one that was cancelled. */
void FCorvaneTusRun::SendSummed(const FCorvaneTusStep& Step, const FString& Sum)
{
	if (bStopWanted)
	{
		return OnSent(FCorvaneTusEnd());
	}
	FCorvaneExchangeRequest Asked = Step.Action == ECorvaneTusAction::Create ? Requests.Create(Facts, Step.Bytes)
																			 : Requests.Send(Machine.GetUpload().Address, Step.Start);
	if (!Sum.IsEmpty()) // what cannot be read for it, the body finds out again, and says why
	{
		FCorvaneTusRequests::AddChecksum(Asked, Step.Checksum, Sum);
	}
	SendBody(Asked, Step);
}

void FCorvaneTusRun::SendBody(FCorvaneExchangeRequest Asked, const FCorvaneTusStep& Step)
{
	TSharedPtr<FCorvaneBodyStream> Body;
	if (Step.Bytes > 0)
	{
		const auto Stopper = [Weak = TWeakPtr<FCorvaneTusRun>(AsShared())]
		{
			if (const TSharedPtr<FCorvaneTusRun> Self = Weak.Pin())
			{
				Self->Post([](FCorvaneTusRun& Run) { Run.Stop(); });
			}
		};
		TArray<FCorvaneBodySegment> Piece;
		Piece.Add(FCorvaneBodySegment::OfFile(File, Step.Start, Step.Bytes));
		Body = MakeShared<FCorvaneBodyStream>(MoveTemp(Piece), FCorvaneHashWish(), Stopper);
		Asked.Stream = Body;
	}
	Send(Asked, Body);
}

void FCorvaneTusRun::Send(const FCorvaneExchangeRequest& Asked, const TSharedPtr<FCorvaneBodyStream>& Body)
{
	Stream = Body;
	Exchange = FCorvaneExchange::Start(Asked, MakeShared<FCorvaneTusReceiver>(
												  [Self = AsShared(), Body](const FCorvaneExchangeResult& Result, const FString& Text)
												  {
													  FCorvaneTusEnd End = CorvaneTusRun::Failed(
														  Body.IsValid() ? Body->Finish().Result : FCorvaneFileResult());
													  End.Exchange = Result;
													  End.Text = Text;
													  Self->Post([End](FCorvaneTusRun& Run) { Run.OnSent(End); });
												  }));
	if (ProgressTeller && !ProgressTicker.IsValid())
	{
		ProgressTicker = FTSTicker::GetCoreTicker().AddTicker(
			FTickerDelegate::CreateLambda([Self = AsShared()](float) { return Self->OnProgressTick(); }), CorvaneTusRun::ProgressInterval);
	}
}

void FCorvaneTusRun::OnSent(FCorvaneTusEnd End)
{
	Exchange.Reset();
	Stream.Reset();
	End.Random = FMath::FRand();
	End.NowUtc = FDateTime::UtcNow();
	const FCorvaneTusStep Step = Machine.OnExchangeEnded(CorvaneTusRun::Now(), End);
	const bool bNoted = Step.Action == ECorvaneTusAction::Begin || Machine.GetUpload().Address.IsEmpty();
	if (Machine.GetOffset() != NotedOffset && !bNoted)
	{
		NotedOffset = Machine.GetOffset();
		Files->Keep(Machine.GetUpload(), NotedOffset);
	}
	Follow(Step);
}

void FCorvaneTusRun::Stop()
{
	bStopWanted = true;
	if (Exchange.IsValid())
	{
		Exchange->Cancel();
	}
}

void FCorvaneTusRun::Wait(double Seconds)
{
	FTSTicker::RemoveTicker(WaitTicker);
	WaitTicker = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda(
														  [Self = AsShared()](float)
														  {
															  Self->Follow(Self->Machine.OnWaitOver(CorvaneTusRun::Now()));
															  return false;
														  }),
		static_cast<float>(Seconds));
}

FCorvaneTransferReport FCorvaneTusRun::GetReport() const
{
	FCorvaneTransferReport Report = Machine.GetReport();
	Report.TransferredBytes += Stream.IsValid() ? Stream->GetHandedOut() : 0;
	return Report;
}

bool FCorvaneTusRun::OnProgressTick()
{
	const FCorvaneTransferReport Report = GetReport();
	if (!IsOver() && Report.TransferredBytes != ToldBytes)
	{
		ToldBytes = Report.TransferredBytes;
		ProgressTeller();
	}
	return !IsOver();
}

void FCorvaneTusRun::TellEnd()
{
	const TSharedRef<FCorvaneTusRun> Self = AsShared(); // the list may hold it last
	FTSTicker::RemoveTicker(WaitTicker);
	FTSTicker::RemoveTicker(ProgressTicker);
	CorvaneRunningTransfers::Remove(*this);
	bTold = true;
	const FCorvaneTransferReport& Report = Machine.GetReport();
	UE_LOG(LogTemp, Display, TEXT("Transfer: %s to %s, %lld bytes, %d attempts, %d restarts. %s"), *Path, *CorvaneAddress::ForLog(URL),
		Report.TransferredBytes, Report.Attempts, Report.Restarts, *Report.Sentence);
	if (EndTeller)
	{
		EndTeller(Report);
	}
}
