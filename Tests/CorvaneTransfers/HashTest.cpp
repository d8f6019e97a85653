#include "Files/FileBlocks.h"
#include "Files/FileHash.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <openssl/evp.h>

namespace
{
	std::string opensslHash(const EVP_MD* Kind, const std::string& Bytes)
	{
		unsigned char Digest[EVP_MAX_MD_SIZE];
		unsigned Size = 0;
		EVP_Digest(Bytes.data(), Bytes.size(), Digest, &Size, Kind, nullptr);
		std::string Hex;
		for (unsigned Index = 0; Index < Size; ++Index)
		{
			Hex += "0123456789abcdef"[Digest[Index] / 16];
			Hex += "0123456789abcdef"[Digest[Index] % 16];
		}
		return Hex;
	}

	std::string inPieces(ECorvaneHashKind Kind, const std::string& Bytes, size_t PieceSize)
	{
		FCorvaneFileHash Hash(Kind);
		for (size_t At = 0; At < Bytes.size(); At += PieceSize)
		{
			const size_t Number = std::min(PieceSize, Bytes.size() - At);
			Hash.Update(reinterpret_cast<const uint8*>(Bytes.data()) + At, static_cast<int64>(Number));
		}
		return utf8(Hash.Final());
	}
} // namespace

TEST(FileHash, IsThatOfOthersForEveryLengthAndCut)
{
	for (size_t Length = 0; Length < 300; ++Length)
	{
		const std::string Bytes = randomBytes(Length);
		const size_t PieceSize = 1 + Length * 7 % 150;
		ASSERT_EQ(inPieces(ECorvaneHashKind::Sha256, Bytes, PieceSize), opensslHash(EVP_sha256(), Bytes)) << Length;
		ASSERT_EQ(inPieces(ECorvaneHashKind::Sha256, Bytes, 300), opensslHash(EVP_sha256(), Bytes)) << Length;
	}
	const std::string Many = randomBytes(3'000'001);
	EXPECT_EQ(inPieces(ECorvaneHashKind::Sha256, Many, 1'000), opensslHash(EVP_sha256(), Many));
	EXPECT_EQ(inPieces(ECorvaneHashKind::Sha1, Many, 1'000), opensslHash(EVP_sha1(), Many));
	EXPECT_EQ(inPieces(ECorvaneHashKind::Md5, Many, 1'000), opensslHash(EVP_md5(), Many));
}

TEST(FileHash, OfAFileIsThatOfAllItsBytes)
{
	const TempDir Dir;
	for (const size_t Length : {size_t(0), size_t(1), size_t(1) << 20, (size_t(2) << 20) + 1})
	{
		const std::string Bytes = randomBytes(Length);
		FString Hash;
		ASSERT_TRUE(CorvaneFileBlocks::HashAll(text(Dir.write("file", Bytes)), ECorvaneHashKind::Md5, false, Hash));
		EXPECT_EQ(utf8(Hash), opensslHash(EVP_md5(), Bytes)) << Length;
	}
}

TEST(FileHash, WishesAreReadAndBadOnesRefused)
{
	const std::string Md5 = "0123456789ABCDEF0123456789abcdef";
	FCorvaneHashWish Wish;
	EXPECT_TRUE(FCorvaneHashWish::Parse(text("MD5:" + Md5), Wish));
	EXPECT_EQ(Wish.Kind, ECorvaneHashKind::Md5);
	EXPECT_EQ(utf8(Wish.Expected), "0123456789abcdef0123456789abcdef");
	EXPECT_TRUE(FCorvaneHashWish::Parse("sha256", Wish));
	EXPECT_EQ(Wish.Kind, ECorvaneHashKind::Sha256);
	EXPECT_TRUE(Wish.Expected.IsEmpty());
	for (const std::string& Bad : {std::string("md5:"), "sha1:" + Md5, "md5:" + Md5 + "0", "md5: " + Md5.substr(1),
			 "md5:" + Md5.substr(1) + "g", std::string("sha512"), std::string(":"), Md5})
	{
		EXPECT_FALSE(FCorvaneHashWish::Parse(text(Bad), Wish)) << Bad;
	}
}
