#include "Misc/FileHelper.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

TEST(FileHelper, WritesAsciiPlainAndTheRestInUtf16AndReadsTextAsItsMarkSays)
{
	struct FCase
	{
		std::string_view Bytes;
		std::string Text;
		bool bWritten; // or only read
	};
	const FCase Cases[] = {
		{"", "", true},
		{{"a\0b\r\n", 5}, std::string("a\0b\r\n", 5), true},
		{{"\xFF\xFE\xFC\x00\xAC\x20\x3D\xD8\x00\xDE", 10}, "\u00fc\u20ac\U0001F600", true},
		{"\xEF\xBB\xBF\xC3\xBC", "\u00fc", false},
		{"\xFE\xFF\x20\xAC", "\u20ac", false},
		{{"\xFF\xFE\xFC\x00\x41", 5}, "\u00fc", false}, // half a unit at the end
		{"\xEF\xBB", "\uFFFD\uFFFD", false},
	};
	const TempDir Dir;
	for (const FCase& Case : Cases)
	{
		if (Case.bWritten)
		{
			EXPECT_TRUE(FFileHelper::SaveStringToFile(text(Case.Text), *text(Dir.path("sub/a.txt"))));
			EXPECT_EQ(Dir.read("sub/a.txt"), Case.Bytes);
		}
		FString Loaded("old");
		EXPECT_TRUE(FFileHelper::LoadFileToString(Loaded, *text(Dir.write("sub/a.txt", Case.Bytes))));
		EXPECT_EQ(utf8(Loaded), Case.Text);
		EXPECT_FALSE(FFileHelper::LoadFileToString(Loaded, *text(Dir.path("missing"))));
		EXPECT_EQ(utf8(Loaded), Case.Text) << "a failure leaves the result alone";
	}
	EXPECT_FALSE(FFileHelper::SaveStringToFile(TEXT("x"), u"/dev/full"));
}
