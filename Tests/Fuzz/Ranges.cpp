// What downloads make of answers: nothing is put into a file where it does not belong.

#include "Download/DownloadAnswer.h"
#include "Fuzz.h"
#include "Rules/DownloadRules.h"

namespace
{
	constexpr int64 Most = 999'999'999'999'999'999; // 18 digits, as much as a header line can tell

	void JudgeByRules(FFuzzInput& Input, int32 Code, const FString& Range)
	{
		using enum ECorvDownloadAction;
		const FCorvDownloadAnswer Answer{Code, CorvaneRules::contentRange(Range), Input.Number(0, MAX_int32)};
		const FCorvDownloadTarget Target{Input.Number(0, Most), Input.Number(0, Most), Input.Flag()};
		const auto [First, Last, Total] = Answer.range;
		HOST_CHECK(First >= -1 && First <= Most && Last >= -1 && Last <= Most && Total >= 0 && Total <= Most);
		const ECorvDownloadAction Action = CorvaneRules::planDownload(Answer, Target);
		const bool bKept = CorvaneRules::areReceivedBytesKept(Answer, Target);
		const bool bStep = CorvaneRules::isStep(Answer, Target);
		const bool bInside = Total == 0 || Target.size + Answer.bodyBytes <= Total;
		const bool bPart = Code == 206 && First == Target.size && bInside;
		HOST_CHECK(Action != Append || Target.bOwnRange || bPart || (Target.size == 0 && (First <= 0 || Code != 206)));
		HOST_CHECK(Action != Append || Target.bOwnRange || Target.start == 0 || bPart);
		HOST_CHECK(Action != Replace || (Code != 206 && Code >= 200 && Code < 300 && Answer.bodyBytes > 0 && Target.start > 0));
		HOST_CHECK(Action != Complete || (Total > 0 && Target.size >= Total));
		HOST_CHECK(!bKept || Target.bOwnRange || bPart || (Code == 200 && Target.size == 0));
		HOST_CHECK(!bStep || (bPart && Total > 0 && Target.start == Target.size && Answer.bodyBytes > 0));
		const int64 Step = CorvaneRules::usableStepSize(static_cast<int32>(Input.Number(INT32_MIN, MAX_int32)));
		const int64 MostBytes = CorvaneRules::mostStepBytes(Target.start, Step, Total);
		HOST_CHECK(Step > 0 && (Total == 0 || Target.start >= Total || (MostBytes > 0 && Target.start + MostBytes <= Total + 1)));
	}

	void JudgeByAnswer(FFuzzInput& Input, int32 Code, const FString& Range)
	{
		using enum ECorvaneDownloadVerdict;
		FCorvaneDownloadQuestion Question;
		Question.Total = Input.Number(-1, Most);
		Question.ExpectedSize = Input.Flag() ? FMath::Max<int64>(Question.Total, 0) : -1;
		Question.OnDisk = Input.Number(0, Question.Total < 0 ? Most : Question.Total);
		Question.Compare = Input.Number(0, FMath::Min(Question.OnDisk, CorvaneDownload::TailBytes));
		Question.Version = FCorvaneVersion::FromDisk(Input.Text(), Input.Text());
		Question.IfNewerThan = FDateTime(Question.OnDisk > 0 ? 0 : Input.Number(0, Most));
		FCorvaneAnswerReader Reader;
		Reader.TakeStatus(Code);
		Reader.TakeHeader(TEXT("Content-Range"), Range);
		while (!Input.IsOver())
		{
			const FString Name = Input.Text(':');
			Reader.TakeHeader(Name, Input.Text());
		}
		const FCorvaneAnswer& Answer = Reader.Get();
		const FCorvaneDownloadJudgement Judged = CorvaneDownload::JudgeAnswer(Question, Answer);
		const bool bAppends = Judged.Verdict == Append || Judged.Verdict == CompareThenAppend;
		HOST_CHECK(bAppends || Judged.Verdict == AllThere || Judged.Verdict == StartOverWithThis || !Judged.Reason.IsEmpty());
		HOST_CHECK(!Judged.TakesBody() || Code == 200 || Code == 203 || (Code == 206 && !Answer.bEncoded && Answer.Range.bValid));
		HOST_CHECK(!Judged.TakesBody() || Question.ExpectedSize < 0 || Judged.Total < 0 || Judged.Total == Question.ExpectedSize);
		if (bAppends)
		{
			HOST_CHECK(Code == 206 && Question.OnDisk > 0 && Answer.Range.First == Question.From() && Judged.MostBytes > 0);
			HOST_CHECK((Judged.Verdict == CompareThenAppend) == (Question.Compare > 0) && Question.Version.MayBe(Answer.Version));
			HOST_CHECK(Judged.Total < 0 || (Question.OnDisk <= Judged.Total && Question.From() + Judged.MostBytes <= Judged.Total));
		}
		HOST_CHECK(Judged.Verdict != StartOverWithThis || Code != 206 ||
				   (Answer.Range.First == 0 && (Judged.Total < 0 || Judged.MostBytes <= Judged.Total)));
		HOST_CHECK(Judged.Verdict != AllThere || (Code == 416 && Judged.Total == Question.OnDisk && Question.Compare == 0));
	}
} // namespace

FUZZ(Input)
{
	const int32 Code = static_cast<int32>(Input.Number(100, 599));
	const FString Range = Input.Text();
	JudgeByRules(Input, Code, Range);
	JudgeByAnswer(Input, Code, Range);
}
