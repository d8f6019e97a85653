#include "Containers/Set.h"
#include "Misc/Base64.h"
#include "Misc/CString.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

TEST(String, ComparesWithoutCaseButForAsciiLettersOnly)
{
	EXPECT_TRUE(FString("Abc[") == FString("aBC["));
	EXPECT_FALSE(FString("[") == FString("{")); // 0x20 apart, as letters are
	EXPECT_FALSE(FString(u"Ä") == FString(u"ä"));
	EXPECT_FALSE(FString("abc").Equals("ABC"));
	TSet<FString> Set;
	Set.Add("ABC");
	Set.Add("abc");
	EXPECT_EQ(Set.Num(), 1);
}

TEST(String, FindsFromBothEnds)
{
	const FString Text(u"one ONE one");
	EXPECT_EQ(Text.Find("One"), 0);
	EXPECT_EQ(Text.Find("ONE", ESearchCase::CaseSensitive), 4);
	EXPECT_EQ(Text.Find("One", ESearchCase::IgnoreCase, ESearchDir::FromEnd), 8);
	EXPECT_EQ(Text.Find("two"), INDEX_NONE);
	EXPECT_EQ(FString().Find("x", ESearchCase::IgnoreCase, ESearchDir::FromEnd), INDEX_NONE);
	EXPECT_TRUE(Text.StartsWith("ONE one") && FString("a.TXT").EndsWith(".txt"));
	EXPECT_FALSE(FString("on").StartsWith("one") || FString("xt").EndsWith(".txt"));
	EXPECT_FALSE(FString("a.TXT").EndsWith(".txt", ESearchCase::CaseSensitive));
}

TEST(String, CutsWithinItsBounds)
{
	const FString Text("abcdef");
	const std::pair<FString, const char*> Cases[] = {{Text.Mid(2, 3), "cde"}, {Text.Mid(-5, 2), "ab"}, {Text.Mid(9), ""},
		{Text.Left(-1), ""}, {Text.Right(2), "ef"}, {Text.Right(-2), ""}, {Text.LeftChop(2), "abcd"}, {Text.RightChop(2), "cdef"},
		{Text.LeftChop(9), ""}, {Text.RightChop(9), ""}, {Text.LeftChop(-1), "abcdef"}, {Text.RightChop(-1), "abcdef"},
		{FString(" a b\t\r\n").TrimEnd(), " a b"}, {FString(" \n").TrimEnd(), ""}};
	for (const auto& [Cut, Expected] : Cases)
	{
		EXPECT_EQ(utf8(Cut), Expected);
	}
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
	EXPECT_TRUE(FString("-5").IsNumeric() && FString("+1.5").IsNumeric());
	EXPECT_FALSE(FString("-").IsNumeric() || FString("1.2.3").IsNumeric() || FString(" 1").IsNumeric());
	EXPECT_EQ(FCString::Atoi64(TEXT(" -5000000000x")), -5'000'000'000);
	EXPECT_EQ(FCString::Atoi64(TEXT("9223372036854775808")), INT64_MAX);
	EXPECT_EQ(FCString::Atoi64(TEXT("-9223372036854775809")), INT64_MIN);
	EXPECT_EQ(FCString::Atoi64(u"\u00fc7"), 0);
	EXPECT_EQ(FCString::Atod(TEXT("\t1.5 MB")), 1.5);
	EXPECT_EQ(FCString::Atod(TEXT("none")), 0);
}

TEST(Utf8, ReadsWellFormedTextAndReplacesTheRest)
{
	const std::pair<std::string_view, std::u16string_view> Cases[] = {
		{"aé€😀", u"aé€😀"},
		{{"a\0b", 3}, {u"a\0b", 3}},
		{"\x80z", u"\uFFFDz"}, // no beginning
		{"z\xE2\x82", u"z\uFFFD\uFFFD"}, // no end
		{"\xE2\x82z", u"\uFFFD\uFFFDz"}, // something else in the middle
		{"\xC0\xAF\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"}, // slashes in more bytes than they need
		{"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"}, // half of a pair
		{"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, // beyond the last character
		{"\xFF\xFE", u"\uFFFD\uFFFD"},
	};
	for (const auto& [Bytes, Units] : Cases)
	{
		for (const uint32 Before :
			{0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8182u, 8183u, 8184u, 8185u, 8190u, 8191u}) // it is read in blocks, those in pieces
		{
			for (const std::string_view After : {"", "0123456789"})
			{
				const std::string All = std::string(Before, 'x').append(Bytes).append(After);
				const FUTF8ToTCHAR Read(All.data(), static_cast<int32>(All.size()));
				const std::u16string Expected = std::u16string(Before, u'x').append(Units).append(After.begin(), After.end());
				EXPECT_TRUE(Expected == std::u16string_view(Read.Get(), static_cast<size_t>(Read.Length())))
					<< testing::PrintToString(Bytes) << " behind " << Before;
			}
		}
	}
	const TCHAR Lone[] = {u'a', 0xDC00, 0xD83D, u'b', 0xD83D, 0};
	EXPECT_EQ(utf8(FString(u"\U0001F600é") + FString(Lone)), "😀éa\uFFFD\uFFFDb\uFFFD");
}

TEST(Base64, TellsDamagedTextAndNeedsNoPadding)
{
	TArray<uint8> Bytes;
	for (const char* Text : {"AAAAA", "A===", "\taGVs", "aG=sbG8=", "aGVsbG8-", "aGVsbG8_", "aGVsbG8\x01"})
	{
		EXPECT_FALSE(FBase64::Decode(Text, Bytes)) << Text;
	}
	EXPECT_FALSE(FBase64::Decode(u"aGVsbG\u0138=", Bytes)) << "its low byte alone would be a digit";
	EXPECT_TRUE(FBase64::Decode("aGVsbG8", Bytes));
	EXPECT_EQ(bytesOf(Bytes), "hello");
}
