#include "Tus/TusRun.h"

#include "Attempts/Address.h"
#include "Math/UnrealMathUtility.h"
#include "Misc/Paths.h"
#include "Tus/TusOptions.h"
#include "Tus/TusReceiver.h"
#include "Upload/ContentTypes.h"

namespace CorvaneTusRun
{
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
		End.bFileChanged = Result.bChanged;
		return End;
	}
} // namespace CorvaneTusRun

FCorvaneTusRun::FCorvaneTusRun(const FString& InURL, const FString& InPath, const FCorvaneResumableOptions& InOptions, FTell InTellEnd,
	TFunction<void()> InTellProgress)
	: TCorvaneMachineRun(MoveTemp(InTellEnd), MoveTemp(InTellProgress), InURL, InOptions, FCorvaneTusWishes::Read(InURL, InPath, InOptions))
	, URL(InURL)
	, Path(InPath)
	, Options(InOptions)
	, Requests(InURL, InOptions)
{
}

void FCorvaneTusRun::Start()
{
	Machine.LimitPieces(Turn.PartBytes());
	BeginWith(Machine.Start(Now()));
}

void FCorvaneTusRun::Cancel()
{
	Files->StopReading();
	TCorvaneMachineRun::Cancel();
}

void FCorvaneTusRun::EndWithProgram()
{
	Files->StopReading();
	TCorvaneMachineRun::EndWithProgram();
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
		return SendInTurn(Step);
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
		return TellEnd();
	}
}

void FCorvaneTusRun::PostClosed()
{
	Post([](FCorvaneTusRun& Self) { Self.Follow(Self.Machine.OnClosed(Now())); });
}

void FCorvaneTusRun::Open()
{
	FCorvaneTusFiles::FWish Wish;
	Wish.Address = URL;
	Wish.Path = Path;
	Wish.Hash = Machine.GetWishes().Hash;
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
	Follow(Machine.OnOpened(Now(), CorvaneTusRun::Translate(Found)));
}

void FCorvaneTusRun::Begin()
{
	NotedOffset = 0;
	Files->Begin(Machine.GetUpload(), [Self = AsShared()](const FCorvaneFileResult& Noted)
		{ Self->Post([Noted](FCorvaneTusRun& Run) { Run.Follow(Run.Machine.OnBegun(Now(), Noted.Failure, Noted.Sentence)); }); });
}

void FCorvaneTusRun::SendInTurn(const FCorvaneTusStep& Step)
{
	Turn.Ask(Step.Bytes, [Self = AsShared(), Step] { Self->SendBytes(Step); });
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
		Body->Share(Turn.GetShare());
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
	BeginProgress();
}

void FCorvaneTusRun::OnSent(FCorvaneTusEnd End)
{
	Exchange.Reset();
	Stream.Reset();
	Turn.Settle();
	Machine.LimitPieces(Turn.PartBytes());
	End.Random = FMath::FRand();
	End.NowUtc = FDateTime::UtcNow();
	const FCorvaneTusStep Step = Machine.OnExchangeEnded(Now(), End);
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
	Turn.Withdraw(); // last: it may send what asks the server to throw the upload away
}

int64 FCorvaneTusRun::BytesOfTry() const
{
	return Stream.IsValid() ? Stream->GetHandedOut() : 0;
}

void FCorvaneTusRun::LogEnd(const FCorvaneTransferReport& Report) const
{
	UE_LOG(LogTemp, Display, TEXT("Transfer: %s to %s, %lld bytes, %d attempts, %d restarts. %s"), *Path, *CorvaneAddress::ForLog(URL),
		Report.TransferredBytes, Report.Attempts, Report.Restarts, *Report.Sentence);
}
