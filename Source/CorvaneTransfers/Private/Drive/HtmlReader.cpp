#include "Drive/HtmlReader.h"

#include "Drive/HtmlEntities.h"
#include "Math/UnrealMathUtility.h"

namespace CorvaneHtmlReader
{
	static constexpr int32 MostText = 64 * 1024;
	static constexpr int32 MostAttributes = 64; // of one tag; those behind are read and dropped

	static bool IsLetter(TCHAR Unit)
	{
		return (Unit >= TEXT('a') && Unit <= TEXT('z')) || (Unit >= TEXT('A') && Unit <= TEXT('Z'));
	}

	static bool IsOneOf(TCHAR Unit, const TCHAR* Set)
	{
		for (; *Set != 0; ++Set)
		{
			if (*Set == Unit)
			{
				return true;
			}
		}
		return false;
	}

	static bool IsBlank(TCHAR Unit)
	{
		return IsOneOf(Unit, TEXT(" \t\n\r\f"));
	}

	static TCHAR Lower(TCHAR Unit)
	{
		return Unit >= TEXT('A') && Unit <= TEXT('Z') ? static_cast<TCHAR>(Unit - TEXT('A') + TEXT('a')) : Unit;
	}

	/** Elements whose content is text to a browser, whatever it looks like, and nothing that the page says to people. */
	static bool HasNoTags(const FString& Name)
	{
		for (const TCHAR* const Each :
			{TEXT("script"), TEXT("style"), TEXT("textarea"), TEXT("xmp"), TEXT("iframe"), TEXT("noembed"), TEXT("noframes")})
		{
			if (Name.Equals(Each, ESearchCase::IgnoreCase))
			{
				return true;
			}
		}
		return false;
	}
} // namespace CorvaneHtmlReader

FString FCorvaneHtmlTag::Get(const TCHAR* AttributeName) const
{
	for (const FAttribute& Each : Attributes)
	{
		if (Each.Name.Equals(AttributeName, ESearchCase::IgnoreCase))
		{
			return Each.Value;
		}
	}
	return FString();
}

FCorvaneHtmlReader::FCorvaneHtmlReader(const FString& InPage)
	: Page(InPage)
{
}

bool FCorvaneHtmlReader::Next(FCorvaneHtmlTag& OutTag)
{
	while (At < Page.Len())
	{
		if (IsAt(TEXT("<!--")))
		{
			At += 2; // "<!-->" is a whole comment
			SkipPast(TEXT("-->"));
		}
		else if (IsAt(TEXT("<!")) || IsAt(TEXT("<?")))
		{
			SkipPast(TEXT(">"));
		}
		else if (Page[At] != TEXT('<') || !TakeTag(OutTag))
		{
			TakeText();
		}
		else
		{
			return At <= Page.Len();
		}
	}
	return false;
}

/** Ignores the case of letters. */
bool FCorvaneHtmlReader::IsAt(const TCHAR* Part) const
{
	int32 Index = At;
	for (; *Part != 0 && Index < Page.Len() && CorvaneHtmlReader::Lower(Page[Index]) == CorvaneHtmlReader::Lower(*Part); ++Part)
	{
		++Index;
	}
	return *Part == 0;
}

void FCorvaneHtmlReader::SkipBlanks()
{
	while (At < Page.Len() && CorvaneHtmlReader::IsBlank(Page[At]))
	{
		++At;
	}
}

void FCorvaneHtmlReader::SkipPast(const TCHAR* Part)
{
	while (At < Page.Len() && !IsAt(Part))
	{
		++At;
	}
	for (; *Part != 0 && At < Page.Len(); ++Part)
	{
		++At;
	}
}

void FCorvaneHtmlReader::SkipContent(const FString& Name)
{
	const FString End = TEXT("</") + Name;
	while (At < Page.Len() && !IsAt(*End))
	{
		++At;
	}
}

FString FCorvaneHtmlReader::TakeUntil(const TCHAR* Ends)
{
	const int32 Begin = At;
	while (At < Page.Len() && !CorvaneHtmlReader::IsOneOf(Page[At], Ends))
	{
		++At;
	}
	return Page.Mid(Begin, At - Begin);
}

void FCorvaneHtmlReader::TakeText()
{
	const int32 Begin = At++;
	while (At < Page.Len() && Page[At] != TEXT('<'))
	{
		++At;
	}
	const int32 Taken = FMath::Min(At - Begin, CorvaneHtmlReader::MostText - Text.Len());
	const FString Words = CorvaneHtml::Decode(Page.Mid(Begin, FMath::Max(Taken, 0)));
	for (int32 Index = 0; Index < Words.Len(); ++Index)
	{
		const bool bBlank = CorvaneHtmlReader::IsBlank(Words[Index]) || Words[Index] == 0xA0;
		if (!bBlank)
		{
			Text.AppendChar(Words[Index]);
		}
		else if (!Text.EndsWith(TEXT(" "), ESearchCase::CaseSensitive))
		{
			Text.AppendChar(TEXT(' '));
		}
	}
}

/** @return false when no tag begins here: then nothing was taken. A tag that the page breaks off in the middle of ends it. */
bool FCorvaneHtmlReader::TakeTag(FCorvaneHtmlTag& OutTag)
{
	const bool bCloses = IsAt(TEXT("</"));
	const int32 NameAt = At + (bCloses ? 2 : 1);
	if (NameAt >= Page.Len() || !CorvaneHtmlReader::IsLetter(Page[NameAt]))
	{
		return false;
	}
	OutTag = FCorvaneHtmlTag();
	OutTag.bCloses = bCloses;
	At = NameAt;
	OutTag.Name = TakeUntil(TEXT(" \t\n\r\f/>"));
	while (TakeAttribute(OutTag))
	{
	}
	if (At >= Page.Len())
	{
		At = Page.Len() + 1; // it has no end
		return true;
	}
	++At;
	if (!bCloses && CorvaneHtmlReader::HasNoTags(OutTag.Name))
	{
		SkipContent(OutTag.Name);
	}
	return true;
}

/** @return false at the end of the tag, or of the page. */
bool FCorvaneHtmlReader::TakeAttribute(FCorvaneHtmlTag& OutTag)
{
	while (At < Page.Len() && (Page[At] == TEXT('/') || CorvaneHtmlReader::IsBlank(Page[At])))
	{
		++At;
	}
	if (At >= Page.Len() || Page[At] == TEXT('>'))
	{
		return false;
	}
	FCorvaneHtmlTag::FAttribute Attribute;
	const int32 Begin = At++; // a name may begin with "="
	TakeUntil(TEXT(" \t\n\r\f/>="));
	Attribute.Name = Page.Mid(Begin, At - Begin);
	SkipBlanks();
	if (At < Page.Len() && Page[At] == TEXT('='))
	{
		++At;
		Attribute.Value = CorvaneHtml::Decode(TakeValue());
	}
	if (OutTag.Attributes.Num() < CorvaneHtmlReader::MostAttributes)
	{
		OutTag.Attributes.Add(Attribute);
	}
	return true;
}

FString FCorvaneHtmlReader::TakeValue()
{
	SkipBlanks();
	const bool bQuoted = IsAt(TEXT("\"")) || IsAt(TEXT("'"));
	if (!bQuoted)
	{
		return TakeUntil(TEXT(" \t\n\r\f>"));
	}
	const TCHAR Quote[] = {Page[At], 0};
	++At;
	FString Value = TakeUntil(Quote);
	++At;
	return Value;
}
