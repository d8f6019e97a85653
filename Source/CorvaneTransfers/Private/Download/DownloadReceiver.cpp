#include "Download/DownloadReceiver.h"

#include "HAL/PlatformProcess.h"
#include "HAL/PlatformTime.h"
#include "Pace/Holding.h"

namespace CorvaneDownloadReceiver
{
	/** Of a body that nobody wants, such as an error's page, so many bytes are let pass to keep the connection. */
	static constexpr int64 MostUnwanted = 4 * 1024;

	static FCorvaneSourceFacts MakeSource(const FString& Address, const FCorvaneDownloadJudgement& Judged)
	{
		FCorvaneSourceFacts Source;
		Source.Address = Address;
		Source.ETag = Judged.Version.ETag;
		Source.LastModified = Judged.Version.DateForDisk();
		Source.Total = Judged.Total;
		return Source;
	}

	static const TCHAR* const AcceptRanges = TEXT("Accept-Ranges");

	static bool CanSendParts(const FCorvaneAnswer& Answer)
	{
		const FString* const Told = Answer.Kept.Find(AcceptRanges);
		return !Answer.bEncoded && (Answer.Code == 206 || (Told && *Told == TEXT("bytes")));
	}
} // namespace CorvaneDownloadReceiver

FCorvaneDownloadReceiver::FCorvaneDownloadReceiver(FPlan&& InPlan, const TSharedRef<FCorvaneDownloadFiles>& InFiles, FTell InTell)
	: Plan(MoveTemp(InPlan))
	, Files(InFiles)
	, Tell(MoveTemp(InTell))
	, TailCheck(TArray<uint8>(Plan.Tail))
{
}

TArray<FString> FCorvaneDownloadReceiver::HeadersOfInterest()
{
	return {CorvaneDownloadReceiver::AcceptRanges};
}

bool FCorvaneDownloadReceiver::OnAnswer(const FCorvaneAnswer& Answer)
{
	Judged = CorvaneDownload::JudgeAnswer(Plan.Question, Answer);
	bTakesBody = Judged.TakesBody();
	bTakesPart = Answer.Code == 206 && Plan.Question.Until >= 0;
	bCanGoOnBehind = bTakesBody && CorvaneDownloadReceiver::CanSendParts(Answer);
	Total = Judged.Total;
	BodyBegan = FPlatformTime::Seconds();
	if (Judged.Verdict == ECorvaneDownloadVerdict::StartOverWithThis)
	{
		End.bStartedOver = true;
		Files->StartOver(CorvaneDownloadReceiver::MakeSource(Plan.Address, Judged));
	}
	return true;
}

bool FCorvaneDownloadReceiver::OnBytes(const uint8* Bytes, int64 Number)
{
	Seen += Number;
	if (!bTakesBody)
	{
		return Seen <= CorvaneDownloadReceiver::MostUnwanted;
	}
	End.bTooLong = Judged.MostBytes >= 0 && Seen > Judged.MostBytes;
	const int64 Surplus = End.bTooLong ? FMath::Min<int64>(Seen - Judged.MostBytes, Number) : 0;
	return TakeBody(Bytes, Number - Surplus) && !End.bTooLong;
}

bool FCorvaneDownloadReceiver::TakeBody(const uint8* Bytes, int64 Number)
{
	int64 Compared = 0;
	if (Judged.Verdict == ECorvaneDownloadVerdict::CompareThenAppend)
	{
		Compared = TailCheck.Take(Bytes, Number);
		End.bTailDiffers = TailCheck.Differs();
		End.bTailPassed = TailCheck.IsPassed();
	}
	if (End.bTailDiffers || (Number > Compared && !Files->Put(Bytes + Compared, Number - Compared)))
	{
		return false;
	}
	Brought += Number - Compared;
	KeepPace(Number);
	return true;
}

/** Parts that were asked for are small, and waited between; here only a body that came whole is held up. */
void FCorvaneDownloadReceiver::KeepPace(int64 Number)
{
	double Held = Plan.Share.IsValid() ? CorvanePace::ShortOf(Plan.Share->Note(Number)) : 0.0;
	if (Plan.BytesPerSecond > 0)
	{
		Held = FMath::Max(Held, CorvanePace::HoldAfter(Seen, FPlatformTime::Seconds() - BodyBegan, Plan.BytesPerSecond));
	}
	if (!bTakesPart && Held > 0)
	{
		FPlatformProcess::Sleep(static_cast<float>(Held));
	}
}

void FCorvaneDownloadReceiver::OnEnd(const FCorvaneExchangeResult& Result)
{
	End.Exchange = Result;
	Files->EndAttempt(
		[End = MoveTemp(End), Tell = MoveTemp(Tell)](const FCorvaneAttemptFiles& Done) mutable
		{
			End.Length = Done.Length;
			End.Written = Done.Written;
			End.FileFailure = Done.Result.Failure;
			End.FileSentence = Done.Result.Sentence;
			Tell(MoveTemp(End));
		});
}
