#include "Upload/UploadRun.h"

#include "Attempts/Address.h"
#include "HAL/PlatformTime.h"
#include "Math/UnrealMathUtility.h"
#include "Upload/UploadOptions.h"
#include "Upload/UploadReceiver.h"

namespace CorvaneUploadRun
{
	static constexpr float ProgressInterval = 0.1f;

	static double Now()
	{
		return FPlatformTime::Seconds();
	}

	/** Fills in what is known of the files once they are looked at. */
	static FCorvaneUploadFound FindFiles(TArray<FCorvaneBodySegment>& Segments)
	{
		FCorvaneUploadFound Found;
		for (FCorvaneBodySegment& Segment : Segments)
		{
			if (Segment.IsFile())
			{
				FCorvaneSentFile File;
				Found.Result = FCorvaneSentFile::Find(Segment.File.Path, File);
				if (!Found.Result.IsOk())
				{
					return Found;
				}
				Segment = FCorvaneBodySegment::OfFile(File);
			}
			Found.TotalBytes += Segment.Num();
		}
		return Found;
	}
} // namespace CorvaneUploadRun

FCorvaneUploadRun::FCorvaneUploadRun(
	const FCorvaneUploadContent& InContent, const FCorvaneUploadOptions& InOptions, FTell InTellEnd, TFunction<void()> InTellProgress)
	: Content(InContent)
	, Options(InOptions)
	, Verb(CorvaneUploadOptions::VerbOf(InContent, InOptions))
	, EndTeller(MoveTemp(InTellEnd))
	, ProgressTeller(MoveTemp(InTellProgress))
	, Machine(InContent.URL, Verb, InOptions)
{
}

void FCorvaneUploadRun::Post(TUniqueFunction<void(FCorvaneUploadRun&)> Letter)
{
	Mailbox->PostTo(AsShared(), MoveTemp(Letter));
}

void FCorvaneUploadRun::Start()
{
	CorvaneRunningTransfers::Add(AsShared());
	const bool bHashIsReadable = FCorvaneHashWish::Parse(Options.Hash, Hash);
	const FCorvaneUploadStep First =
		Machine.Start(CorvaneUploadRun::Now(), CorvaneUploadOptions::FindFault(Content, Options, bHashIsReadable));
	Post([First](FCorvaneUploadRun& Self) { Self.Follow(First); }); // nothing is told inside this call
}

void FCorvaneUploadRun::Pause()
{
	Follow(Machine.Pause(CorvaneUploadRun::Now()));
}

void FCorvaneUploadRun::Continue()
{
	Follow(Machine.Continue(CorvaneUploadRun::Now()));
}

void FCorvaneUploadRun::Cancel()
{
	Follow(Machine.Cancel(CorvaneUploadRun::Now()));
}

void FCorvaneUploadRun::EndWithProgram()
{
	Follow(Machine.EndOfProgram(CorvaneUploadRun::Now()));
}

void FCorvaneUploadRun::Follow(const FCorvaneUploadStep& Step)
{
	switch (Step.Action)
	{
	case ECorvaneUploadAction::None:
		return;
	case ECorvaneUploadAction::Find:
		return Find();
	case ECorvaneUploadAction::Send:
		return Send();
	case ECorvaneUploadAction::Stop:
		return Stop();
	case ECorvaneUploadAction::Wait:
		return Wait(Step.WaitSeconds);
	case ECorvaneUploadAction::Tell:
		return Post([](FCorvaneUploadRun& Self) { Self.TellEnd(); }); // a cancel tells nothing inside its call
	}
}

void FCorvaneUploadRun::Find()
{
	Strand->Add(
		[Self = AsShared(), Segments = Content.Segments]() mutable
		{
			const FCorvaneUploadFound Found = CorvaneUploadRun::FindFiles(Segments);
			Self->Post(
				[Found, Segments = MoveTemp(Segments)](FCorvaneUploadRun& Run) mutable
				{
					Run.Content.Segments = MoveTemp(Segments);
					Run.Follow(Run.Machine.OnFound(CorvaneUploadRun::Now(), Found));
				});
		});
}

void FCorvaneUploadRun::Send()
{
	const TSharedRef<FCorvaneBodyStream> Sent = MakeShared<FCorvaneBodyStream>(
		Content.Segments, Hash, [Self = AsShared()] { Self->Post([](FCorvaneUploadRun& Run) { Run.Stop(); }); });
	Body = Sent;
	FCorvaneExchangeRequest Asked = MakeRequest();
	Asked.Stream = Body;
	Exchange = FCorvaneExchange::Start(Asked,
		MakeShared<FCorvaneUploadReceiver>(Sent, Options.AnswerLimit,
			[Self = AsShared()](const FCorvaneUploadTryEnd& End) { Self->Post([End](FCorvaneUploadRun& Run) { Run.OnSent(End); }); }));
	BeginProgress();
}

FCorvaneExchangeRequest FCorvaneUploadRun::MakeRequest() const
{
	FCorvaneExchangeRequest Asked;
	Asked.Verb = Verb;
	Asked.URL = Content.URL;
	Asked.Headers.Add(TEXT("Content-Type"), Content.ContentType);
	for (const TPair<FString, FString>& Header : Options.Headers)
	{
		Asked.Headers.Add(Header.Key, Header.Value);
	}
	Asked.SilenceSeconds = static_cast<float>(Options.SilenceSeconds);
	return Asked;
}

void FCorvaneUploadRun::OnSent(FCorvaneUploadTryEnd End)
{
	Exchange.Reset();
	Body.Reset();
	End.Random = FMath::FRand();
	End.NowUtc = FDateTime::UtcNow();
	Follow(Machine.OnTryEnded(CorvaneUploadRun::Now(), End));
}

void FCorvaneUploadRun::Stop()
{
	if (Exchange.IsValid())
	{
		Exchange->Cancel();
	}
}

void FCorvaneUploadRun::Wait(double Seconds)
{
	FTSTicker::RemoveTicker(WaitTicker);
	WaitTicker = FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda(
														  [Self = AsShared()](float)
														  {
															  Self->Follow(Self->Machine.OnWaitOver(CorvaneUploadRun::Now()));
															  return false;
														  }),
		static_cast<float>(Seconds));
}

FCorvaneTransferReport FCorvaneUploadRun::GetReport() const
{
	FCorvaneTransferReport Report = Machine.GetReport();
	Report.TransferredBytes += Body.IsValid() ? Body->GetHandedOut() : 0;
	return Report;
}

void FCorvaneUploadRun::BeginProgress()
{
	if (ProgressTeller && !ProgressTicker.IsValid())
	{
		ProgressTicker = FTSTicker::GetCoreTicker().AddTicker(
			FTickerDelegate::CreateLambda([Self = AsShared()](float) { return Self->OnProgressTick(); }),
			CorvaneUploadRun::ProgressInterval);
	}
}

bool FCorvaneUploadRun::OnProgressTick()
{
	const FCorvaneTransferReport Report = GetReport();
	if (!IsOver() && Report.TransferredBytes != ToldBytes)
	{
		ToldBytes = Report.TransferredBytes;
		ProgressTeller();
	}
	return !IsOver();
}

void FCorvaneUploadRun::TellEnd()
{
	const TSharedRef<FCorvaneUploadRun> Self = AsShared(); // the list may hold it last
	FTSTicker::RemoveTicker(WaitTicker);
	FTSTicker::RemoveTicker(ProgressTicker);
	CorvaneRunningTransfers::Remove(*this);
	bTold = true;
	const FCorvaneTransferReport& Report = Machine.GetReport();
	UE_LOG(LogTemp, Display, TEXT("Transfer: %s to %s, %lld bytes, %d attempts. %s"), *Verb, *CorvaneAddress::ForLog(Content.URL),
		Report.TransferredBytes, Report.Attempts, *Report.Sentence);
	if (EndTeller)
	{
		EndTeller(Report);
	}
}
