#include "Download/DownloadRun.h"

#include "Attempts/Address.h"
#include "Attempts/HttpDate.h"
#include "Download/DownloadOptions.h"
#include "Download/DownloadReceiver.h"
#include "Math/UnrealMathUtility.h"

namespace CorvaneDownloadRun
{
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
		Finished.KeptBytes = Part.KeptBytes;
		return Finished;
	}
} // namespace CorvaneDownloadRun

FCorvaneDownloadRun::FCorvaneDownloadRun(const FString& InURL, const FString& InTarget, const FCorvaneDownloadOptions& InOptions,
	FTell InTellEnd, TFunction<void()> InTellProgress, const TSharedRef<FCorvaneRoute>& InRoute)
	: TCorvaneMachineRun(MoveTemp(InTellEnd), MoveTemp(InTellProgress), InURL, InTarget, InOptions)
	, URL(InURL)
	, Route(InRoute)
{
}

void FCorvaneDownloadRun::Start()
{
	Files->WhenWritingFails(
		[Weak = TWeakPtr<FCorvaneDownloadRun>(AsShared())]
		{
			if (const TSharedPtr<FCorvaneDownloadRun> Self = Weak.Pin())
			{
				Self->Post([](FCorvaneDownloadRun& Run) { Run.Stop(); });
			}
		});
	Machine.LimitParts(Turn.PartBytes());
	const bool bHashIsReadable = FCorvaneHashWish::Parse(Options.Hash, Hash);
	const FString WayFault = Route->FindFault();
	BeginWith(Machine.Start(Now(), WayFault.IsEmpty() ? CorvaneDownload::FindFault(URL, Target, Options, bHashIsReadable) : WayFault));
}

void FCorvaneDownloadRun::OnPaceChanged()
{
	Machine.LimitParts(Turn.PartBytes());
	const bool bLosesBytes = Receiver.IsValid() && Receiver->BroughtBytes() > 0 && !Receiver->CanGoOnBehind();
	if (!bLosesBytes)
	{
		Follow(Machine.AskInParts());
	}
}

void FCorvaneDownloadRun::Follow(const FCorvaneDownloadStep& Step)
{
	switch (Step.Action)
	{
	case ECorvaneDownloadAction::None:
		return;
	case ECorvaneDownloadAction::Look:
		return Look();
	case ECorvaneDownloadAction::LookForRest:
		return LookForRest();
	case ECorvaneDownloadAction::Open:
		return Open(Step);
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
		return Files->Close([Self = AsShared()](int64 KeptBytes) { Self->PostClosed(KeptBytes); });
	case ECorvaneDownloadAction::Discard:
		return Files->Discard([Self = AsShared()] { Self->PostClosed(0); });
	case ECorvaneDownloadAction::Tell:
		return TellEnd();
	}
}

void FCorvaneDownloadRun::PostClosed(int64 KeptBytes)
{
	Post([KeptBytes](FCorvaneDownloadRun& Self) { Self.FollowLetter(Self.Machine.OnClosed(Now(), KeptBytes)); });
}

void FCorvaneDownloadRun::Look()
{
	Files->Look(Target, [Self = AsShared()](bool bExists, FDateTime Time)
		{ Self->Post([bExists, Time](FCorvaneDownloadRun& Run) { Run.Follow(Run.Machine.OnLooked(Now(), bExists, Time)); }); });
}

void FCorvaneDownloadRun::LookForRest()
{
	Files->LookForRest(Target, Machine.GetReport().AskedAddress,
		[Self = AsShared()](int64 Bytes, int64 Total)
		{ Self->Post([Bytes, Total](FCorvaneDownloadRun& Run) { Run.FollowLetter(Run.Machine.OnRestFound(Now(), Bytes, Total)); }); });
}

void FCorvaneDownloadRun::Open(const FCorvaneDownloadStep& Step)
{
	TSharedPtr<FCorvaneDownloadReceiver> First;
	if (Step.bAskIfNew && Turn.TakeIfUnlimited())
	{
		Route->Prepare();
		First = MakeReceiver(Step.Question, {});
	}
	Files->Open(Target, Machine.GetReport().AskedAddress, Options.bResume, Hash.Kind,
		[Self = AsShared(), Question = FCorvaneDownloadQuestion(Step.Question), First = MoveTemp(First)](const FCorvaneOpenedPart& Part)
		{
			if (First.IsValid() && Part.IsNew() && !Self->Route->IsCancelled())
			{
				return Self->Launch(Question, First.ToSharedRef());
			}
			Self->Post([Opened = CorvaneDownloadRun::Translate(Part)](FCorvaneDownloadRun& Run) { Run.OnOpened(Opened); });
		});
}

void FCorvaneDownloadRun::OnOpened(const FCorvaneDownloadOpened& Opened)
{
	Receiver.Reset(); // of a try that did not begin
	Turn.Settle();
	FollowLetter(Machine.OnOpened(Now(), Opened));
}

void FCorvaneDownloadRun::Ask(const FCorvaneDownloadQuestion& Question)
{
	Route->Prepare();
	Turn.Ask(Question.MostBytes(), [Self = AsShared(), Question] { Self->CompareAndSend(Question); });
}

void FCorvaneDownloadRun::CompareAndSend(const FCorvaneDownloadQuestion& Question)
{
	if (Question.Compare == 0)
	{
		return Send(Question, {}, {});
	}
	Files->ReadTail(Question.Compare,
		[Self = AsShared(), Question](TArray<uint8>&& Tail, const FCorvaneFileResult& TailRead)
		{
			Self->Post([Question, Tail = MoveTemp(Tail), TailRead](FCorvaneDownloadRun& Run) mutable
				{ Run.Send(Question, MoveTemp(Tail), TailRead); });
		});
}

/** A try that cannot be ends like one that was cancelled. */
void FCorvaneDownloadRun::Send(const FCorvaneDownloadQuestion& Question, TArray<uint8>&& Tail, const FCorvaneFileResult& TailRead)
{
	if (!TailRead.IsOk())
	{
		FCorvaneAttemptEnd End;
		End.Length = Question.OnDisk;
		End.FileFailure = TailRead.Failure;
		End.FileSentence = TailRead.Sentence;
		return OnSent(MoveTemp(End));
	}
	Files->Then([Self = AsShared(), Question = FCorvaneDownloadQuestion(Question), Taker = MakeReceiver(Question, MoveTemp(Tail))]
		{ Self->Launch(Question, Taker); });
}

/** @return what takes the answer of the try that begins. */
TSharedRef<FCorvaneDownloadReceiver> FCorvaneDownloadRun::MakeReceiver(const FCorvaneDownloadQuestion& Question, TArray<uint8>&& Tail)
{
	FCorvaneDownloadReceiver::FPlan Plan;
	Plan.Question = Question;
	Plan.Address = Machine.GetReport().AskedAddress;
	Plan.Tail = MoveTemp(Tail);
	Plan.BytesPerSecond = Options.BytesPerSecond;
	Plan.Share = Turn.GetShare();
	const TSharedRef<FCorvaneDownloadReceiver> Taker = MakeShared<FCorvaneDownloadReceiver>(
		MoveTemp(Plan), Files, [Self = AsShared(), Question](FCorvaneAttemptEnd&& End) { Self->OnTried(Question, MoveTemp(End)); });
	Receiver = Taker;
	BeginProgress();
	return Taker;
}

/** Makes the request, which would cost the game thread more than any other step of a small file. Thread: that of the files. */
void FCorvaneDownloadRun::Launch(const FCorvaneDownloadQuestion& Question, const TSharedRef<FCorvaneDownloadReceiver>& Taker) const
{
	FCorvaneExchangeRequest Asked;
	Asked.URL = URL;
	Asked.Headers = CorvaneDownload::MakeHeaders(Question, Options);
	Asked.HeadersToKeep = FCorvaneDownloadReceiver::HeadersOfInterest();
	Asked.SilenceSeconds = static_cast<float>(Options.SilenceSeconds);
	Files->BeginAttempt();
	const bool bHasWhatIsGoneOnBehind = Question.OnDisk == 0 || Question.OnDisk == Files->GetLength();
	bHasWhatIsGoneOnBehind ? Route->Start(Asked, Taker) : Taker->OnEnd(FCorvaneExchangeResult());
}

/** What is all there goes to its place at once: the game thread has nothing to say to that. Thread: that of the files. */
void FCorvaneDownloadRun::OnTried(const FCorvaneDownloadQuestion& Question, FCorvaneAttemptEnd&& End)
{
	const FCorvaneDownloadJudgement Judged = CorvaneDownload::JudgeAnswer(Question, End.Exchange.Answer);
	End.bFinished = CorvaneDownload::BringsWholeFile(Question, Judged, End);
	if (End.bFinished)
	{
		End.Finished = CorvaneDownloadRun::Translate(Files->FinishNow(MakeWish(Judged.Version)));
	}
	Post([Own = MoveTemp(End)](FCorvaneDownloadRun& Run) mutable { Run.OnSent(MoveTemp(Own)); });
}

void FCorvaneDownloadRun::OnSent(FCorvaneAttemptEnd&& End)
{
	Receiver.Reset();
	Turn.Settle();
	Machine.LimitParts(Turn.PartBytes());
	End.Random = FMath::FRand();
	End.NowUtc = FDateTime::UtcNow();
	FollowLetter(Machine.OnAttemptEnded(Now(), End));
}

void FCorvaneDownloadRun::Stop()
{
	if (Machine.IsToEnd())
	{
		Files->StopReading();
	}
	Route->Cancel();
	Turn.Withdraw();
}

/** Thread: any. */
FCorvaneFinishWish FCorvaneDownloadRun::MakeWish(const FCorvaneVersion& Version) const
{
	FCorvaneFinishWish Wish;
	Wish.Hash = Hash;
	Wish.FileTime = Options.bKeepServerTime ? CorvaneHttpDate::Parse(Version.LastModified) : FDateTime::MinValue();
	Wish.bMayReplace =
		Options.IfTargetExists == ECorvaneIfTargetExists::Replace || Options.IfTargetExists == ECorvaneIfTargetExists::OnlyIfNewer;
	return Wish;
}

void FCorvaneDownloadRun::Finish()
{
	Files->Finish(MakeWish(Machine.GetVersion()),
		[Self = AsShared()](const FCorvaneFinished& Part)
		{
			Self->Post([Finished = CorvaneDownloadRun::Translate(Part)](FCorvaneDownloadRun& Run)
				{ Run.FollowLetter(Run.Machine.OnFinished(Now(), Finished)); });
		});
}

FCorvaneTransferReport FCorvaneDownloadRun::GetReport() const
{
	FCorvaneTransferReport Report = TCorvaneMachineRun::GetReport();
	if (Receiver.IsValid() && Report.TotalBytes < 0)
	{
		Report.TotalBytes = Receiver->ToldTotal();
	}
	return Report;
}

int64 FCorvaneDownloadRun::BytesOfTry() const
{
	return Receiver.IsValid() ? Receiver->BroughtBytes() : 0;
}

void FCorvaneDownloadRun::LogEnd(const FCorvaneTransferReport& Report) const
{
	UE_LOG(LogTemp, Display, TEXT("Transfer: %s %s, %lld bytes, %d attempts, %d restarts. %s"),
		*CorvaneAddress::WithoutQuery(Report.AskedAddress), *Target, Report.TransferredBytes, Report.Attempts, Report.Restarts,
		*Report.Sentence);
}
