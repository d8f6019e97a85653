#include "Rules/DownloadRules.h"

#include "Misc/CString.h"
#include "Rules/StatusCodes.h"

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

	static bool followsByChoice(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
	{
		return Target.size == 0 || (Answer.statusCode == CorvaneStatus::partialContent && Answer.range.first == Target.size);
	}

	static ECorvDownloadAction planWhole(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
	{
		if (Target.bOwnRange) // whoever asks for a part of his own choice gets it
		{
			return CorvaneDownloadRules::followsByChoice(Answer, Target) ? ECorvDownloadAction::Append : ECorvDownloadAction::Refuse;
		}
		const bool bTellsPart = Answer.statusCode == CorvaneStatus::partialContent && Answer.range.first >= 0;
		const bool bOtherPart = bTellsPart && !CorvaneRules::followsOnDisk(Answer.range, 0, Answer.bodyBytes);
		return Target.size > 0 || bOtherPart ? ECorvDownloadAction::Refuse : ECorvDownloadAction::Append;
	}

	static ECorvDownloadAction planRest(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
	{
		if (Answer.statusCode != CorvaneStatus::partialContent)
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

int64 CorvaneRules::mostStepBytes(int64 Start, int64 StepSize, int64 FullSize)
{
	return FullSize > 0 && Start + StepSize > FullSize ? FullSize - Start : StepSize + 1;
}

FString CorvaneRules::versionOf(const FString& ETag, const FString& LastModified)
{
	return ETag.IsEmpty() || ETag.StartsWith(TEXT("W/")) ? LastModified : ETag;
}

bool CorvaneRules::areOtherVersions(const FString& One, const FString& Other)
{
	const FString Quote = TEXT("\""); // of a tag; a date has none
	const bool bBothTold = !One.IsEmpty() && !Other.IsEmpty();
	return bBothTold && One.StartsWith(Quote) == Other.StartsWith(Quote) && !One.Equals(Other);
}

bool CorvaneRules::isAsTold(const FCorvDownloadAnswer& Answer, int64 SizeOnDisk)
{
	if (Answer.statusCode != CorvaneStatus::partialContent)
	{
		return true; // the HTTP layer has compared the lengths
	}
	const bool bSpanIsKnown = Answer.range.first >= 0 && Answer.range.last >= 0;
	const bool bWholeSpan = !bSpanIsKnown || Answer.bodyBytes == Answer.range.last - Answer.range.first + 1;
	return bWholeSpan && (Answer.range.total <= 0 || SizeOnDisk == Answer.range.total);
}

int64 CorvaneRules::toldSize(const FCorvDownloadAnswer& Answer)
{
	return Answer.range.total > 0 ? Answer.range.total : Answer.range.last + 1;
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
		const bool bBelow =
			Answer.statusCode == CorvaneStatus::partialContent && Target.size > Answer.range.total; // it has become another file
		return bBelow ? ECorvDownloadAction::Refuse : ECorvDownloadAction::Complete;
	}
	if (!CorvaneStatus::isDone(Answer.statusCode))
	{
		return ECorvDownloadAction::Nothing;
	}
	if (Answer.bodyBytes == 0)
	{
		const bool bPromisedMore = !Target.bOwnRange && (Answer.statusCode == CorvaneStatus::partialContent || Target.size > 0);
		return bPromisedMore ? ECorvDownloadAction::Refuse : ECorvDownloadAction::Nothing; // else the file is an empty one
	}
	return Target.start > 0 ? CorvaneDownloadRules::planRest(Answer, Target) : CorvaneDownloadRules::planWhole(Answer, Target);
}

bool CorvaneRules::areReceivedBytesKept(const FCorvDownloadAnswer& Answer, const FCorvDownloadTarget& Target)
{
	if (Answer.bodyBytes == 0)
	{
		return false;
	}
	if (Target.bOwnRange)
	{
		return CorvaneStatus::isDone(Answer.statusCode) && CorvaneDownloadRules::followsByChoice(Answer, Target);
	}
	if (Answer.statusCode == CorvaneStatus::partialContent)
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
	return Answer.statusCode == CorvaneStatus::partialContent && Answer.range.total > 0 &&
		   followsOnDisk(Answer.range, Target.size, Answer.bodyBytes);
}

int64 CorvaneRules::usableStepSize(int32 StepSize)
{
	constexpr int64 defaultStep = 10485760;
	constexpr int64 largestStep = int64(1) << 30;
	return StepSize < 1 ? defaultStep : FMath::Min<int64>(StepSize, largestStep);
}
