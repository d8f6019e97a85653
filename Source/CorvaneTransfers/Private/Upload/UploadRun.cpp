#include "Upload/UploadRun.h"

#include "Attempts/Address.h"
#include "Math/UnrealMathUtility.h"
#include "Upload/UploadOptions.h"
#include "Upload/UploadReceiver.h"

namespace CorvaneUploadRun
{
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
	: TCorvaneMachineRun(
		  MoveTemp(InTellEnd), MoveTemp(InTellProgress), InContent.URL, CorvaneUploadOptions::VerbOf(InContent, InOptions), InOptions)
	, Content(InContent)
	, Options(InOptions)
	, Verb(CorvaneUploadOptions::VerbOf(InContent, InOptions))
{
}

void FCorvaneUploadRun::Start()
{
	const bool bHashIsReadable = FCorvaneHashWish::Parse(Options.Hash, Hash);
	BeginWith(Machine.Start(Now(), CorvaneUploadOptions::FindFault(Content, Options, bHashIsReadable)));
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
		return SendInTurn();
	case ECorvaneUploadAction::Stop:
		return Stop();
	case ECorvaneUploadAction::Wait:
		return Wait(Step.WaitSeconds);
	case ECorvaneUploadAction::Tell:
		return TellEnd();
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
					Run.Follow(Run.Machine.OnFound(Now(), Found));
				});
		});
}

/** All of a body goes out in one request: the pace counts what is more than a part as it comes. */
void FCorvaneUploadRun::SendInTurn()
{
	bStopWanted = false;
	Turn.Ask(Turn.PartBytes(), [Self = AsShared()] { Self->Send(); });
}

/** One that was stopped before it was sent ends like one that was cancelled. */
void FCorvaneUploadRun::Send()
{
	if (bStopWanted)
	{
		return OnSent(FCorvaneUploadTryEnd());
	}
	const TSharedRef<FCorvaneBodyStream> Sent = MakeShared<FCorvaneBodyStream>(
		Content.Segments, Hash, [Self = AsShared()] { Self->Post([](FCorvaneUploadRun& Run) { Run.Stop(); }); });
	Sent->Share(Turn.GetShare());
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
	Turn.Settle();
	End.Random = FMath::FRand();
	End.NowUtc = FDateTime::UtcNow();
	Follow(Machine.OnTryEnded(Now(), End));
}

void FCorvaneUploadRun::Stop()
{
	bStopWanted = true;
	Turn.Withdraw();
	if (Exchange.IsValid())
	{
		Exchange->Cancel();
	}
}

int64 FCorvaneUploadRun::BytesOfTry() const
{
	return Body.IsValid() ? Body->GetHandedOut() : 0;
}

void FCorvaneUploadRun::LogEnd(const FCorvaneTransferReport& Report) const
{
	UE_LOG(LogTemp, Display, TEXT("Transfer: %s to %s, %lld bytes, %d attempts. %s"), *Verb, *CorvaneAddress::ForLog(Content.URL),
		Report.TransferredBytes, Report.Attempts, *Report.Sentence);
}
