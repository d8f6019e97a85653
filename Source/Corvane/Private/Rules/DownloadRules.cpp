#include "Rules/DownloadRules.h"

#include "Misc/CString.h"

namespace CorvaneDownloadRules
{
	/** @return -1 unless the text is a decimal number of at most 18 digits. */
	static int64 number(const FString& Text)
	{
		constexpr int32 mostDigits = 18;
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			if (Text[Index] < TEXT('0') || Text[Index] > TEXT('9'))
			{
				return -1;
			}
		}
		return Text.IsEmpty() || Text.Len() > mostDigits ? -1 : FCString::Atoi64(*Text);
	}

	static bool isSuccess(int32 StatusCode)
	{
		return StatusCode >= 200 && StatusCode <= 299;
	}

	static ECorvDownloadAction planWhole(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
	{
		if (Target.bOwnRange)
		{
			return ECorvDownloadAction::Append; // whoever asks for a part of his own choice gets it
		}
		const bool bOtherPart = Answer.statusCode == 206 && Answer.range.first > 0;
		return Target.size > 0 || bOtherPart ? ECorvDownloadAction::Refuse : ECorvDownloadAction::Append;
	}

	static ECorvDownloadAction planRest(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
	{
		if (Answer.statusCode != 206)
		{
			return ECorvDownloadAction::Replace;
		}
		return CorvaneRules::followsOnDisk(Answer.range, Target.size, Answer.bodyBytes) ? ECorvDownloadAction::Append
																						: ECorvDownloadAction::Refuse;
	}
} // namespace CorvaneDownloadRules

FCorvContentRange CorvaneRules::contentRange(const FString& Value)
{
	FCorvContentRange Range;
	FString Span;
	FString Total;
	if (!Value.Split(TEXT("/"), &Span, &Total))
	{
		return Range;
	}
	Range.total = FMath::Max<int64>(CorvaneDownloadRules::number(Total), 0);
	FString Unit;
	FString First;
	FString Last;
	if (Span.Split(TEXT(" "), &Unit, &Span) && Unit == TEXT("bytes") && Span.Split(TEXT("-"), &First, &Last))
	{
		Range.first = CorvaneDownloadRules::number(First);
		Range.last = CorvaneDownloadRules::number(Last);
	}
	return Range;
}

FString CorvaneRules::rangeFrom(int64 Start)
{
	return FString::Printf(TEXT("bytes=%lld-"), Start);
}

FString CorvaneRules::stepRange(int64 Start, int64 StepSize, int64 FullSize)
{
	if (FullSize <= 0)
	{
		return TEXT("bytes=0-0"); // asks for the size
	}
	const int64 End = Start + StepSize;
	return End > FullSize ? rangeFrom(Start) : FString::Printf(TEXT("bytes=%lld-%lld"), Start, End);
}

bool CorvaneRules::followsOnDisk(const FCorvContentRange& Range, int64 SizeOnDisk, int64 BodyBytes)
{
	const bool bInsideSpan = Range.last < 0 || BodyBytes <= Range.last - Range.first + 1;
	const bool bInsideFile = Range.total <= 0 || SizeOnDisk + BodyBytes <= Range.total;
	return Range.first == SizeOnDisk && bInsideSpan && bInsideFile;
}

ECorvDownloadAction CorvaneRules::planDownload(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
{
	if (Answer.range.total > 0 && Target.size >= Answer.range.total)
	{
		return ECorvDownloadAction::Complete;
	}
	if (!CorvaneDownloadRules::isSuccess(Answer.statusCode) || Answer.bodyBytes == 0)
	{
		return ECorvDownloadAction::Nothing;
	}
	return Target.start > 0 ? CorvaneDownloadRules::planRest(Answer, Target) : CorvaneDownloadRules::planWhole(Answer, Target);
}

bool CorvaneRules::areReceivedBytesKept(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
{
	if (Answer.bodyBytes == 0)
	{
		return false;
	}
	if (Answer.statusCode == 206)
	{
		return followsOnDisk(Answer.range, Target.size, Answer.bodyBytes);
	}
	return Answer.statusCode == 200 && Target.start == 0 && Target.size == 0;
}

bool CorvaneRules::isStep(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
{
	if (Answer.bodyBytes == 0 || Target.size != Target.start)
	{
		return false;
	}
	const bool bWholeFile = Answer.statusCode == 200 && Target.start == 0;
	const bool bPart = Answer.statusCode == 206 && Answer.range.total > 0;
	return bWholeFile || (bPart && followsOnDisk(Answer.range, Target.size, Answer.bodyBytes));
}

int64 CorvaneRules::usableStepSize(int32 StepSize)
{
	constexpr int64 defaultStep = 10485760;
	constexpr int64 largestStep = int64(1) << 30;
	return StepSize < 1 ? defaultStep : FMath::Min<int64>(StepSize, largestStep);
}
