#include "Misc/CString.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

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
	EXPECT_EQ(utf8(Text.Left(-1)), "");
	EXPECT_EQ(utf8(Text.Right(2)), "ef");
	EXPECT_EQ(utf8(Text.Right(-2)), "");
}

TEST(String, ChopsAndTrims)
{
	EXPECT_EQ(utf8(FString("abcdef").LeftChop(2)), "abcd");
	EXPECT_EQ(utf8(FString("abcdef").RightChop(2)), "cdef");
	EXPECT_EQ(utf8(FString("abc").LeftChop(9) + FString("abc").RightChop(9)), "");
	EXPECT_EQ(utf8(FString("abc").LeftChop(-1) + FString("abc").RightChop(-1)), "abcabc");
	EXPECT_EQ(utf8(FString(" a b\t\r\n").TrimEnd() + FString(" \n").TrimEnd()), " a b");
	EXPECT_TRUE(FString("a.TXT").EndsWith(".txt"));
	EXPECT_FALSE(FString("a.TXT").EndsWith(".txt", ESearchCase::CaseSensitive));
	EXPECT_FALSE(FString("xt").EndsWith(".txt"));
}

TEST(String, ReplacesEveryOccurrence)
{
	EXPECT_EQ(utf8(FString("/data/A.txt").Replace(TEXT("a"), TEXT("a_0"))), "/da_0ta_0/a_0.txt");
	EXPECT_EQ(utf8(FString("/data/A.txt").Replace(TEXT("a"), TEXT("-"), ESearchCase::CaseSensitive)), "/d-t-/A.txt");
	EXPECT_EQ(utf8(FString("aaa").Replace(TEXT("aa"), TEXT(""))), "a");
	EXPECT_EQ(utf8(FString("abc").Replace(TEXT(""), TEXT("x"))), "abc");
}

TEST(String, SplitsInTwo)
{
	FString Left("untouched"), Right("a::b::c");
	EXPECT_FALSE(Right.Split("-", &Left, nullptr));
	EXPECT_FALSE(Right.Split("", &Left, nullptr));
	EXPECT_EQ(utf8(Left), "untouched");
	EXPECT_TRUE(Right.Split("::", &Left, &Right)) << "a part may be the text itself";
	EXPECT_EQ(utf8(Left) + "|" + utf8(Right), "a|b::c");
	EXPECT_TRUE(FString("a::b::c").Split("::", &Left, &Right, ESearchCase::IgnoreCase, ESearchDir::FromEnd));
	EXPECT_EQ(utf8(Left) + "|" + utf8(Right), "a::b|c");
}

TEST(String, TellsAndReadsNumbers)
{
	for (const char* Number : {"0", "-5", "+1.5", "007"})
	{
		EXPECT_TRUE(FString(Number).IsNumeric()) << Number;
	}
	for (const char* NoNumber : {"", "-", "1.2.3", "1e5", " 1", "--1"})
	{
		EXPECT_FALSE(FString(NoNumber).IsNumeric()) << NoNumber;
	}
	EXPECT_EQ(FCString::Atoi64(TEXT(" -5000000000x")), -5'000'000'000);
	EXPECT_EQ(FCString::Atoi64(TEXT("9223372036854775808")), INT64_MAX);
	EXPECT_EQ(FCString::Atoi64(TEXT("-9223372036854775809")), INT64_MIN);
	EXPECT_EQ(FCString::Atoi64(u"\u00fc7"), 0);
	EXPECT_EQ(FCString::Atod(TEXT("\t1.5 MB")), 1.5);
	EXPECT_EQ(FCString::Atod(TEXT("none")), 0);
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

TEST(String, PrintsTypedArguments)
{
	const FString Text =
		FString::Printf(TEXT("%s|%d|%lld|%llu|%.2f|%02x|%%"), *FString(u"Grüße"), -5, INT64_MIN, UINT64_MAX, 1.5f, static_cast<uint8>(10));
	EXPECT_EQ(utf8(Text), "Grüße|-5|-9223372036854775808|18446744073709551615|1.50|0a|%");
}

TEST(Utf8, ReadsWellFormedTextAndReplacesTheRest)
{
	const std::pair<std::string_view, std::u16string_view> Cases[] = {
		{"aé€😀", u"aé€😀"},
		{{"a\0b", 3}, {u"a\0b", 3}},
		{"\x80z", u"\uFFFDz"}, // no beginning
		{"z\xE2\x82", u"z\uFFFD\uFFFD"}, // no end
		{"\xE2\x82z", u"\uFFFD\uFFFDz"}, // something else in the middle
		{"\xC0\xAF", u"\uFFFD\uFFFD"}, // a slash in more bytes than it needs
		{"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"}, // half of a pair
		{"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last character
		{"\xFF\xFE", u"\uFFFD\uFFFD"},
	};
	for (const auto& [Bytes, Units] : Cases)
	{
		const FUTF8ToTCHAR Read(Bytes.data(), static_cast<int32>(Bytes.size()));
		EXPECT_EQ(std::u16string(Read.Get(), static_cast<size_t>(Read.Length())), Units) << testing::PrintToString(Bytes);
	}
}

TEST(Utf8, WritesSurrogatePairsAndReplacesLoneOnes)
{
	EXPECT_EQ(utf8(FString(u"\U0001F600é")), "😀é");
	const TCHAR Lone[] = {u'a', 0xDC00, 0xD83D, u'b', 0xD83D, 0};
	EXPECT_EQ(utf8(FString(Lone)), "a\uFFFD\uFFFDb\uFFFD");
}
