#include "Attempts/Answer.h"

#include "Attempts/HttpDate.h"
#include "Misc/CString.h"
#include "Misc/Timespan.h"

namespace CorvaneAnswerParts
{
	static const TCHAR* const WeakMark = TEXT("W/");
	static constexpr int32 MostCookies = 32;

	/** Without quotes it is no entity tag; a server would take it in If-Range for a date. */
	static bool IsStrongETag(const FString& ETag)
	{
		return ETag.Len() >= 2 && ETag.StartsWith(TEXT("\""), ESearchCase::CaseSensitive) &&
			   ETag.EndsWith(TEXT("\""), ESearchCase::CaseSensitive);
	}

	/** A date is good to the second only: of a file that was written just now there may be another version with the same one. */
	static bool IsStrongDate(const FString& LastModified, const FString& Date)
	{
		const int64 Changed = CorvaneHttpDate::Parse(LastModified).GetTicks();
		const int64 Told = CorvaneHttpDate::Parse(Date).GetTicks();
		const bool bMarked = LastModified.StartsWith(WeakMark, ESearchCase::CaseSensitive); // as on disk, a weak one is
		return Changed > 0 && !bMarked && (Date.IsEmpty() || Told - Changed >= 60 * ETimespan::TicksPerSecond);
	}

	static bool IsSame(const FString& A, const FString& B)
	{
		return A.Equals(B, ESearchCase::CaseSensitive);
	}
} // namespace CorvaneAnswerParts

bool FCorvaneVersion::HasStrongETag() const
{
	return CorvaneAnswerParts::IsStrongETag(ETag);
}

FString FCorvaneVersion::ForIfRange() const
{
	if (HasStrongETag())
	{
		return ETag;
	}
	return bDateIsStrong ? LastModified : FString();
}

bool FCorvaneVersion::MayBe(const FCorvaneVersion& Other) const
{
	const bool bBothTagged = !ETag.IsEmpty() && !Other.ETag.IsEmpty();
	const bool bSameTag = bBothTagged && CorvaneAnswerParts::IsSame(ETag, Other.ETag);
	if (bBothTagged && (!bSameTag || HasStrongETag()))
	{
		return bSameTag;
	}
	return LastModified.IsEmpty() || Other.LastModified.IsEmpty() || CorvaneAnswerParts::IsSame(LastModified, Other.LastModified);
}

FString FCorvaneVersion::DateForDisk() const
{
	return LastModified.IsEmpty() || bDateIsStrong ? LastModified : CorvaneAnswerParts::WeakMark + LastModified;
}

FCorvaneVersion FCorvaneVersion::FromDisk(const FString& Tag, const FString& Date)
{
	const FString Mark = CorvaneAnswerParts::WeakMark;
	const bool bWeak = Date.StartsWith(Mark, ESearchCase::CaseSensitive);
	FCorvaneVersion Version;
	Version.ETag = Tag;
	Version.LastModified = bWeak ? Date.RightChop(Mark.Len()) : Date;
	Version.bDateIsStrong = !bWeak && !Date.IsEmpty();
	return Version;
}

int64 FCorvaneAnswer::ToldTotal() const
{
	return Code == 206 || Code == 416 ? Range.Total : ContentLength;
}

int64 CorvaneAnswer::ParseNumber(const FString& Text)
{
	constexpr int32 MostDigits = 18;
	for (int32 Index = 0; Index < Text.Len(); ++Index)
	{
		if (Text[Index] < TEXT('0') || Text[Index] > TEXT('9'))
		{
			return -1;
		}
	}
	return Text.IsEmpty() || Text.Len() > MostDigits ? -1 : FCString::Atoi64(*Text);
}

FCorvaneContentRange CorvaneAnswer::ParseRange(const FString& Value)
{
	FCorvaneContentRange Range;
	FString Unit;
	FString Span;
	FString Total;
	if (!Value.Split(TEXT(" "), &Unit, &Span) || Unit != TEXT("bytes") || !Span.Split(TEXT("/"), &Span, &Total))
	{
		return Range;
	}
	Range.Total = ParseNumber(Total);
	FString First;
	FString Last;
	if (Span.Split(TEXT("-"), &First, &Last))
	{
		Range.First = ParseNumber(First);
		Range.Last = ParseNumber(Last);
	}
	const bool bTotalFits = Range.Total < 0 ? Total == TEXT("*") : Range.Last < Range.Total;
	Range.bValid = Range.First >= 0 && Range.First <= Range.Last && bTotalFits;
	return Range;
}

void FCorvaneAnswerReader::TakeStatus(int32 Code)
{
	Answer = FCorvaneAnswer();
	Answer.Code = Code;
	bChunked = false;
}

void FCorvaneAnswerReader::TakeHeader(const FString& Name, const FString& Value)
{
	if (NamesToKeep.Contains(Name))
	{
		const FString* const Before = Answer.Kept.Find(Name); // a list may come in several lines
		Answer.Kept.Add(Name, Before && !Before->Equals(Value, ESearchCase::CaseSensitive) ? *Before + TEXT(", ") + Value : Value);
	}
	if (Name == TEXT("Content-Length"))
	{
		Answer.ContentLength = CorvaneAnswer::ParseNumber(Value);
		Answer.bTellsEnd = true;
	}
	else if (Name == TEXT("Content-Range"))
	{
		Answer.Range = CorvaneAnswer::ParseRange(Value);
	}
	else if (Name == TEXT("Content-Encoding"))
	{
		Answer.bEncoded |= !Value.IsEmpty() && Value != TEXT("identity");
	}
	else if (Name == TEXT("Transfer-Encoding"))
	{
		bChunked = Answer.bTellsEnd = true;
	}
	else if (Name == TEXT("ETag"))
	{
		Answer.Version.ETag = Value;
	}
	else if (Name == TEXT("Last-Modified"))
	{
		Answer.Version.LastModified = Value;
		JudgeDate();
	}
	else if (Name == TEXT("Date"))
	{
		Answer.Date = Value;
		JudgeDate();
	}
	else if (Name == TEXT("Retry-After"))
	{
		Answer.RetryAfter = Value;
	}
	else if (Name == TEXT("Content-Type"))
	{
		Answer.ContentType = Value;
	}
	else if (Name == TEXT("Content-Disposition"))
	{
		Answer.bAttachment = Value.StartsWith(TEXT("attachment"), ESearchCase::IgnoreCase);
	}
	else if (Name == TEXT("Set-Cookie") && Answer.Cookies.Num() < CorvaneAnswerParts::MostCookies)
	{
		FString Pair = Value;
		Value.Split(TEXT(";"), &Pair, nullptr);
		Answer.Cookies.Add(Pair);
	}
	if (bChunked || Answer.bEncoded)
	{
		Answer.ContentLength = -1;
	}
}

void FCorvaneAnswerReader::JudgeDate()
{
	Answer.Version.bDateIsStrong = CorvaneAnswerParts::IsStrongDate(Answer.Version.LastModified, Answer.Date);
}
