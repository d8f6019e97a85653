#include "Drive/HtmlEntities.h"

namespace CorvaneHtmlEntities
{
	static constexpr int32 MostLength = 12; // of what stands between & and ;
	static constexpr uint32 Unknown = 0xFFFD;

	struct FNamed
	{
		const TCHAR* Name;
		uint32 Point;
	};

	static const FNamed Named[] = {{TEXT("amp"), '&'}, {TEXT("lt"), '<'}, {TEXT("gt"), '>'}, {TEXT("quot"), '"'}, {TEXT("apos"), '\''},
		{TEXT("nbsp"), 0xA0}, {TEXT("colon"), ':'}, {TEXT("sol"), '/'}, {TEXT("quest"), '?'}, {TEXT("equals"), '='}, {TEXT("num"), '#'}};

	/** @return 16 for what is no digit. */
	static uint32 DigitOf(TCHAR Unit)
	{
		if (Unit >= TEXT('0') && Unit <= TEXT('9'))
		{
			return static_cast<uint32>(Unit - TEXT('0'));
		}
		const TCHAR Lower = static_cast<TCHAR>(Unit | 0x20);
		return Lower >= TEXT('a') && Lower <= TEXT('f') ? static_cast<uint32>(Lower - TEXT('a') + 10) : 16;
	}

	/** @param Digits  behind the "#". @return 0 when they are none. */
	static uint32 NumberOf(const FString& Digits)
	{
		const bool bHex = Digits.StartsWith(TEXT("x"), ESearchCase::IgnoreCase);
		const uint32 Base = bHex ? 16 : 10;
		uint32 Point = 0;
		for (int32 Index = bHex ? 1 : 0; Index < Digits.Len(); ++Index)
		{
			const uint32 Digit = DigitOf(Digits[Index]);
			if (Digit >= Base)
			{
				return 0;
			}
			Point = Point > 0x10FFFF ? Point : Point * Base + Digit;
		}
		const bool bSurrogate = Point >= 0xD800 && Point <= 0xDFFF;
		return bSurrogate || Point > 0x10FFFF ? Unknown : Point;
	}

	/** @return the character that a name stands for; 0 = it is none. */
	static uint32 PointOf(const FString& Name)
	{
		if (Name.StartsWith(TEXT("#"), ESearchCase::CaseSensitive))
		{
			return NumberOf(Name.RightChop(1));
		}
		for (const FNamed& Each : Named)
		{
			if (Name.Equals(Each.Name, ESearchCase::CaseSensitive))
			{
				return Each.Point;
			}
		}
		return 0;
	}

	static void AppendPoint(FString& OutText, uint32 Point)
	{
		if (Point > 0xFFFF)
		{
			OutText.AppendChar(static_cast<TCHAR>(0xD800 + ((Point - 0x10000) >> 10)));
			OutText.AppendChar(static_cast<TCHAR>(0xDC00 + (Point & 0x3FF)));
		}
		else
		{
			OutText.AppendChar(static_cast<TCHAR>(Point));
		}
	}

	/** @return where the ; stands that ends what begins behind an &; -1 = near by there is none. */
	static int32 FindEnd(const FString& Text, int32 From)
	{
		for (int32 Index = From; Index < Text.Len() && Index - From <= MostLength; ++Index)
		{
			if (Text[Index] == TEXT(';'))
			{
				return Index;
			}
		}
		return -1;
	}
} // namespace CorvaneHtmlEntities

FString CorvaneHtml::Decode(const FString& Text)
{
	using namespace CorvaneHtmlEntities;
	FString Decoded;
	for (int32 Index = 0; Index < Text.Len(); ++Index)
	{
		const int32 End = Text[Index] == TEXT('&') ? FindEnd(Text, Index + 1) : -1;
		const uint32 Point = End < 0 ? 0 : PointOf(Text.Mid(Index + 1, End - Index - 1));
		if (Point == 0)
		{
			Decoded.AppendChar(Text[Index]);
		}
		else
		{
			AppendPoint(Decoded, Point);
			Index = End;
		}
	}
	return Decoded;
}
