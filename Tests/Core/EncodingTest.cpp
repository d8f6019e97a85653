#include "Misc/Base64.h"
#include "Misc/SecureHash.h"
#include "RandomBytes.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

namespace
{
	std::string md5(std::initializer_list<std::string_view> Pieces)
	{
		FMD5 Hash;
		for (const std::string_view Piece : Pieces)
		{
			Hash.Update(reinterpret_cast<const uint8*>(Piece.data()), Piece.size());
		}
		uint8 Digest[16];
		Hash.Final(Digest);
		std::string Text;
		for (const uint8 Byte : Digest)
		{
			Text += utf8(FString::Printf(TEXT("%02x"), Byte));
		}
		return Text;
	}
} // namespace

TEST(Base64, KnownTexts)
{
	const std::pair<std::string_view, const char*> Cases[] = {
		{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"hello", "aGVsbG8="}, {{"\xFB\xFF\x00", 3}, "+/8A"}};
	for (const auto& [Bytes, Text] : Cases)
	{
		EXPECT_EQ(utf8(FBase64::Encode(byteArray(Bytes))), Text);
	}
}

TEST(Base64, BytesComeBackWhateverTheirNumber)
{
	for (const size_t Number : {0u, 1u, 2u, 3u, 4u, 1023u, 1024u, 1025u, 12287u, 12288u, 12289u, 24576u, 50000u})
	{
		const std::string Bytes = randomBytes(Number);
		const FString Text = FBase64::Encode(byteArray(Bytes));
		EXPECT_EQ(Text.Len(), static_cast<int32>((Number + 2) / 3 * 4));
		TArray<uint8> Decoded = byteArray("old");
		EXPECT_TRUE(FBase64::Decode(Text, Decoded)) << Number;
		EXPECT_TRUE(bytesOf(Decoded) == Bytes) << Number;
	}
}

TEST(Base64, TellsDamagedText)
{
	TArray<uint8> Bytes;
	for (const char* Text : {"A", "AAAAA", "A===", "aGVs bG8=", "aGVsbG8=\n", "\taGVs", "aG=sbG8=", "aGVsbG8-", "aGVsbG8_", "aGVsbG8\x01"})
	{
		EXPECT_FALSE(FBase64::Decode(Text, Bytes)) << Text;
	}
	EXPECT_FALSE(FBase64::Decode(u"aGVsbG\u0138=", Bytes)) << "its low byte alone would be a digit";
	EXPECT_TRUE(FBase64::Decode("aGVsbG8", Bytes)) << "padding may be missing";
	EXPECT_EQ(bytesOf(Bytes), "hello");
}

TEST(Md5, KnownDigestsInAnyPieces)
{
	EXPECT_EQ(md5({}), "d41d8cd98f00b204e9800998ecf8427e");
	EXPECT_EQ(md5({"abc"}), "900150983cd24fb0d6963f7d28e17f72");
	EXPECT_EQ(md5({"", "a", "", "bc"}), "900150983cd24fb0d6963f7d28e17f72");
}
