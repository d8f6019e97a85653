#include "Containers/StringConv.h"
#include "Containers/UnrealString.h"
#include "Misc/Guid.h"

#include <gmock/gmock.h>

namespace
{
	std::string utf8(const FString& Text)
	{
		return FTCHARToUTF8(*Text, Text.Len()).Get();
	}

	std::u16string utf16(std::string_view Bytes)
	{
		const FUTF8ToTCHAR Units(Bytes.data(), static_cast<int32>(Bytes.size()));
		return std::u16string(Units.Get(), static_cast<size_t>(Units.Length()));
	}
} // namespace

TEST(String, ComparesWithoutCaseButForAsciiLettersOnly)
{
	EXPECT_TRUE(FString("Abc[") == FString("aBC["));
	EXPECT_FALSE(FString("[") == FString("{")); // 0x20 apart, as letters are
	EXPECT_FALSE(FString(u"Ä") == FString(u"ä"));
	EXPECT_FALSE(FString("abc").Equals("ABC"));
	EXPECT_EQ(GetTypeHash(FString("Content-Type")), GetTypeHash(FString("CONTENT-TYPE")));
}

TEST(String, FindsFromBothEnds)
{
	const FString Text(u"one ONE one");
	EXPECT_EQ(Text.Find("One"), 0);
	EXPECT_EQ(Text.Find("ONE", ESearchCase::CaseSensitive), 4);
	EXPECT_EQ(Text.Find("One", ESearchCase::IgnoreCase, ESearchDir::FromEnd), 8);
	EXPECT_EQ(Text.Find("two"), INDEX_NONE);
	EXPECT_EQ(FString().Find("x", ESearchCase::IgnoreCase, ESearchDir::FromEnd), INDEX_NONE);
	EXPECT_TRUE(Text.StartsWith("ONE one"));
	EXPECT_FALSE(FString("on").StartsWith("one"));
}

TEST(String, CutsWithinItsBounds)
{
	const FString Text("abcdef");
	EXPECT_EQ(utf8(Text.Mid(2, 3)), "cde");
	EXPECT_EQ(utf8(Text.Mid(-5, 2)), "ab");
	EXPECT_EQ(utf8(Text.Mid(9)), "");
	EXPECT_EQ(utf8(Text.Left(99)), "abcdef");
	EXPECT_EQ(utf8(Text.Left(-1)), "");
	EXPECT_EQ(utf8(Text.Right(2)), "ef");
	EXPECT_EQ(utf8(Text.Right(-2)), "");
}

TEST(String, ParsesIntoParts)
{
	const auto Parts = [](const char* Text, bool bCullEmpty)
	{
		TArray<FString> Array;
		FString(Text).ParseIntoArray(Array, TEXT("\r\n"), bCullEmpty);
		std::string Joined;
		for (const FString& Part : Array)
		{
			Joined += utf8(Part) + "|";
		}
		return Joined;
	};
	EXPECT_EQ(Parts("a\r\nb\r\n\r\nc\n\r\n", true), "a|b|c\n|");
	EXPECT_EQ(Parts("\r\na\r\n", false), "|a||");
	EXPECT_EQ(Parts("", true), "");
	EXPECT_EQ(Parts("\r\n\r\n", true), "");
}

TEST(String, KeepsZeros)
{
	const FString Text = FString::ConstructFromPtrSize(TEXT("a\0b"), 3);
	EXPECT_EQ(Text.Len(), 3);
	EXPECT_EQ(utf8(Text).size(), 1u); // a C string ends at the zero
	EXPECT_EQ(FTCHARToUTF8(*Text, Text.Len()).Length(), 3);
}

TEST(String, PrintsTypedArguments)
{
	const FString Text =
		FString::Printf(TEXT("%s|%d|%lld|%llu|%.2f|%02x|%%"), *FString(u"Grüße"), -5, INT64_MIN, UINT64_MAX, 1.5f, static_cast<uint8>(10));
	EXPECT_EQ(utf8(Text), "Grüße|-5|-9223372036854775808|18446744073709551615|1.50|0a|%");
}

TEST(Utf8, ReadsWellFormedTextAndReplacesTheRest)
{
	struct FCase
	{
		const char* Name;
		std::string_view Bytes;
		std::u16string_view Units;
	};
	const FCase Cases[] = {
		{"one to four bytes", "aé€😀", u"aé€😀"},
		{"zero inside", {"a\0b", 3}, {u"a\0b", 3}},
		{"lone continuation", "\x80z", u"\uFFFDz"},
		{"cut at the end", "z\xE2\x82", u"z\uFFFD\uFFFD"},
		{"cut in the middle", "\xE2\x82z", u"\uFFFD\uFFFDz"},
		{"overlong slash", "\xC0\xAF", u"\uFFFD\uFFFD"},
		{"surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
		{"beyond the last character", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
		{"no lead byte", "\xFF\xFE", u"\uFFFD\uFFFD"},
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(utf16(Case.Bytes), Case.Units) << Case.Name;
	}
}

TEST(Utf8, WritesSurrogatePairsAndReplacesLoneOnes)
{
	EXPECT_EQ(utf8(FString(u"\U0001F600é")), "😀é");
	const TCHAR Lone[] = {u'a', 0xDC00, 0xD83D, u'b', 0xD83D, 0};
	EXPECT_EQ(utf8(FString(Lone)), "a\uFFFD\uFFFDb\uFFFD");
}

TEST(Guid, IsThirtyTwoUpperCaseDigitsAndNew)
{
	const std::string First = utf8(FGuid::NewGuid().ToString());
	EXPECT_THAT(First, testing::MatchesRegex("[0-9A-F]{32}"));
	EXPECT_NE(First, utf8(FGuid::NewGuid().ToString()));
}
