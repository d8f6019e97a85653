// Header lines of an answer: what is told holds together, and what goes to disk comes back.

#include "Attempts/HttpDate.h"
#include "Attempts/RetryPolicy.h"
#include "Fuzz.h"
#include "Misc/Timespan.h"
#include "Tus/TusAnswer.h"

namespace
{
	constexpr int64 Most = 999'999'999'999'999'999;

	/** What is read is a moment that the engine knows, and is written as what is read again. */
	void CheckDate(const FString& Text)
	{
		const FDateTime Moment = CorvaneHttpDate::Parse(Text);
		HOST_CHECK(Moment.GetTicks() >= 0 && Moment.GetTicks() <= FDateTime::MaxValue().GetTicks());
		HOST_CHECK(Moment.GetTicks() == 0 || CorvaneHttpDate::Parse(CorvaneHttpDate::ToText(Moment)).GetTicks() == Moment.GetTicks());
		const double Wait = CorvaneRetry::ParseRetryAfter(Text, FDateTime(Most / 2));
		HOST_CHECK(Wait == -1 || (Wait >= 0 && Wait <= 366.0 * 24 * 60 * 60));
	}

	void CheckVersion(const FCorvaneVersion& Version)
	{
		const FCorvaneVersion Kept = FCorvaneVersion::FromDisk(Version.ETag, Version.DateForDisk());
		HOST_CHECK(IsSame(Kept.ETag, Version.ETag) && IsSame(Kept.LastModified, Version.LastModified));
		HOST_CHECK(Kept.bDateIsStrong == Version.bDateIsStrong && IsSame(Kept.ForIfRange(), Version.ForIfRange()));
		HOST_CHECK(Kept.MayBe(Version) && Version.MayBe(Kept) && Version.MayBe(FCorvaneVersion()) && FCorvaneVersion().MayBe(Version));
	}

	void CheckUpload(const FCorvaneAnswer& Answer, int64 Start, int64 End)
	{
		using enum ECorvaneTusVerdict;
		const int64 Offset = FCorvaneTusHeaders::Read(Answer).Offset;
		HOST_CHECK(CorvaneTus::JudgeCreation(Answer, End).Verdict != Created ||
				   (Answer.IsSuccess() && !Answer.Kept.FindRef(TEXT("Location")).IsEmpty()));
		HOST_CHECK(CorvaneTus::JudgeOffset(Answer, End).Verdict != Told || (Offset >= 0 && Offset <= End));
		HOST_CHECK(CorvaneTus::JudgePiece(Answer, Start, End).Verdict != Told || (Offset >= Start && Offset <= End));
	}
} // namespace

FUZZ(Input)
{
	const int64 End = Input.Number(0, Most);
	const int64 Start = Input.Number(0, End);
	FCorvaneAnswerReader Reader;
	Reader.Keep(FCorvaneTusHeaders::Names());
	Reader.TakeStatus(static_cast<int32>(Input.Number(0, 999)));
	while (!Input.IsOver())
	{
		const FString Name = Input.Text(':');
		const FString Value = Input.Text();
		CheckDate(Value);
		Reader.TakeHeader(Name, Value);
		const FCorvaneAnswer& Answer = Reader.Get();
		const FCorvaneContentRange& Range = Answer.Range;
		HOST_CHECK(Answer.ContentLength >= -1 && Answer.ContentLength <= Most && Answer.Cookies.Num() <= 32);
		HOST_CHECK(!Range.bValid || (Range.First >= 0 && Range.First <= Range.Last && (Range.Total < 0 || Range.Last < Range.Total)));
		HOST_CHECK(Answer.ToldTotal() >= -1 && Answer.ToldTotal() <= Most);
		CheckVersion(Answer.Version);
	}
	CheckUpload(Reader.Get(), Start, End);
}
