#include "Misc/FileHelper.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

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
		{"plain\r\n", "plain\r\n", true},
		{{"a\0b", 3}, std::string("a\0b", 3), true},
		{{"\xFF\xFE\xFC\x00\xAC\x20", 6}, "\u00fc\u20ac", true},
		{{"\xFF\xFE\x61\x00\x3D\xD8\x00\xDE", 8}, "a\U0001F600", true},
		{"\xC3\xBC", "\u00fc", false},
		{"\xEF\xBB\xBF\xC3\xBC", "\u00fc", false},
		{"\xFE\xFF\x20\xAC", "\u20ac", false},
		{{"\xFF\xFE\xFC\x00\x41", 5}, "\u00fc", false}, // half a unit at the end
		{"\xFF\xFE", "", false},
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
	}
}

TEST(FileHelper, FailuresLeaveTheResultAlone)
{
	const TempDir Dir;
	fs::resize_file(Dir.write("huge", ""), uintmax_t(1) << 31);
	TArray<uint8> Array = byteArray("old");
	FString Text("old");
	for (const std::string& Path : {Dir.path("missing"), Dir.path(), Dir.path("huge"), Dir.path(std::string(300, 'x')), std::string()})
	{
		EXPECT_FALSE(FFileHelper::LoadFileToArray(Array, *text(Path))) << Path;
		EXPECT_FALSE(FFileHelper::LoadFileToString(Text, *text(Path))) << Path;
	}
	EXPECT_EQ(bytesOf(Array) + utf8(Text), "oldold");
	EXPECT_FALSE(FFileHelper::SaveArrayToFile(Array, *text(Dir.path())));
	EXPECT_FALSE(FFileHelper::SaveArrayToFile(Array, u"/dev/full"));
	EXPECT_FALSE(FFileHelper::SaveStringToFile(text("\u00fc"), u"/dev/full"));
}
