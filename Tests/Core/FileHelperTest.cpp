#include "Misc/FileHelper.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

TEST(FileHelper, WritesAsciiPlainAndTheRestInUtf16)
{
	struct FCase
	{
		std::string Text;
		std::string_view Bytes;
	};
	const FCase Cases[] = {
		{"", ""},
		{"plain\r\n", "plain\r\n"},
		{std::string("a\0b", 3), {"a\0b", 3}},
		{"\u00fc\u20ac", {"\xFF\xFE\xFC\x00\xAC\x20", 6}},
		{"a\U0001F600", {"\xFF\xFE\x61\x00\x3D\xD8\x00\xDE", 8}},
	};
	const TempDir Dir;
	for (const FCase& Case : Cases)
	{
		EXPECT_TRUE(FFileHelper::SaveStringToFile(text(Case.Text), *text(Dir.path("sub/a.txt"))));
		EXPECT_EQ(Dir.read("sub/a.txt"), Case.Bytes);
		FString Loaded("old");
		EXPECT_TRUE(FFileHelper::LoadFileToString(Loaded, *text(Dir.path("sub/a.txt"))));
		EXPECT_EQ(utf8(Loaded), Case.Text);
	}
}

TEST(FileHelper, ReadsTextAsItsMarkSays)
{
	struct FCase
	{
		std::string_view Bytes;
		const char* Text;
	};
	const FCase Cases[] = {
		{"\xC3\xBC", "\u00fc"},
		{"\xEF\xBB\xBF\xC3\xBC", "\u00fc"},
		{"\xFE\xFF\x20\xAC", "\u20ac"},
		{{"\xFF\xFE\xFC\x00\x41", 5}, "\u00fc"}, // half a unit at the end
		{"\xFF\xFE", ""},
		{"\xFF", "\uFFFD"},
		{"\xEF\xBB", "\uFFFD\uFFFD"},
	};
	const TempDir Dir;
	for (const FCase& Case : Cases)
	{
		FString Loaded;
		EXPECT_TRUE(FFileHelper::LoadFileToString(Loaded, *text(Dir.write("a", Case.Bytes))));
		EXPECT_EQ(utf8(Loaded), Case.Text);
	}
}

TEST(FileHelper, ArraysComeBackAndReplace)
{
	const TempDir Dir;
	for (const size_t Size : {100'000u, 1u, 0u})
	{
		const std::string Bytes(Size, '\xA5');
		EXPECT_TRUE(FFileHelper::SaveArrayToFile(byteArray(Bytes), *text(Dir.path("a"))));
		TArray<uint8> Loaded = byteArray("old");
		EXPECT_TRUE(FFileHelper::LoadFileToArray(Loaded, *text(Dir.path("a"))));
		EXPECT_TRUE(bytesOf(Loaded) == Bytes) << Size;
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
