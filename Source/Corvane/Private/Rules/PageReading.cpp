#include "Rules/PageReading.h"

#include "Misc/CString.h"

namespace CorvanePageReading
{
	static FString after(const FString& Text, const TCHAR* Mark)
	{
		FString Rest = Text;
		Text.Split(Mark, nullptr, &Rest);
		return Rest;
	}

	static FString before(const FString& Text, const TCHAR* Mark)
	{
		FString Start = Text;
		Text.Split(Mark, &Start, nullptr);
		return Start;
	}

	static FString without(const FString& Text, const TCHAR* Mark)
	{
		return Text.Replace(Mark, TEXT(""));
	}

	static FString withoutQuotes(const FString& Text)
	{
		return without(Text, TEXT("\""));
	}

	/** The first fields of a list, empty ones not counted; a page may have millions after them. */
	static TArray<FString> firstFields(const FString& List, int32 Number)
	{
		TArray<FString> Fields;
		int32 Start = 0;
		for (int32 End = 0; End <= List.Len() && Fields.Num() < Number; ++End)
		{
			if (End < List.Len() && List[End] != TEXT(','))
			{
				continue;
			}
			if (End > Start)
			{
				Fields.Add(List.Mid(Start, End - Start));
			}
			Start = End + 1;
		}
		return Fields;
	}

	static int64 toBytes(float Value)
	{
		constexpr float beyondInt64 = 9223372036854775808.0f;
		if (Value >= beyondInt64)
		{
			return MAX_int64;
		}
		const bool bIsNumber = Value == Value;
		return bIsNumber ? static_cast<int64>(FMath::Max(Value, -beyondInt64)) : 0;
	}
} // namespace CorvanePageReading

FCorvFileInfo CorvaneRules::readFileInfo(const FString& Page)
{
	using namespace CorvanePageReading;
	constexpr int32 nameField = 1;
	constexpr int32 sizeField = 27;
	FCorvFileInfo Info;
	FString List;
	Page.Split(TEXT("itemJson:"), nullptr, &List);
	const TArray<FString> Fields = firstFields(List, sizeField + 1);
	if (Fields.Num() <= sizeField)
	{
		return Info;
	}
	Info.bReadable = true;
	Info.name = withoutQuotes(Fields[nameField]);
	Info.size = FCString::Atoi64(*without(withoutQuotes(Fields[sizeField]), TEXT("]")));
	return Info;
}

FString CorvaneRules::confirmationToken(const FString& Page)
{
	FString Rest;
	FString Token;
	return Page.Split(TEXT(";confirm="), nullptr, &Rest) && Rest.Split(TEXT("&"), &Token, nullptr) ? Token : FString();
}

FString CorvaneRules::downloadLink(const FString& Page)
{
	using namespace CorvanePageReading;
	const FString Link = before(after(Page, TEXT("id=\"download-url\"")), TEXT("</a>"));
	return withoutQuotes(before(after(Link, TEXT("href=")), TEXT("><")));
}

int64 CorvaneRules::shownSize(const FString& Page)
{
	using namespace CorvanePageReading;
	FString Size;
	if (!Page.Split(TEXT("uc-name-size"), nullptr, &Size))
	{
		return 0;
	}
	Size = before(Size, TEXT("</span>"));
	Size.Split(TEXT("</a>"), nullptr, &Size, ESearchCase::IgnoreCase, ESearchDir::FromEnd);
	Size = without(without(without(Size, TEXT("(")), TEXT(")")), TEXT(" ")).Replace(TEXT(","), TEXT("."));
	const bool bMega = Size.Contains(TEXT("M"));
	const float Number = static_cast<float>(FCString::Atod(*without(Size, bMega ? TEXT("M") : TEXT("G"))));
	return toBytes(Number * (bMega ? 1048576.0f : 1073741824.0f));
}
