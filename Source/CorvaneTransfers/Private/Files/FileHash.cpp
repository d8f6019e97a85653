#include "Files/FileHash.h"

namespace CorvaneFileHash
{
	struct FKind
	{
		ECorvaneHashKind Kind;
		const TCHAR* Name;
		int32 DigestSize;
	};

	static constexpr int32 LongestDigest = FCorvaneSha256::DigestSize;
	static constexpr FKind Kinds[] = {{ECorvaneHashKind::Md5, TEXT("md5"), 16}, {ECorvaneHashKind::Sha1, TEXT("sha1"), 20},
		{ECorvaneHashKind::Sha256, TEXT("sha256"), FCorvaneSha256::DigestSize}};
	static const TCHAR* const HexDigits = TEXT("0123456789abcdef");

	static FString ToHex(const uint8* Bytes, int32 Count)
	{
		FString Hex;
		Hex.Reserve(2 * Count);
		for (int32 Index = 0; Index < Count; ++Index)
		{
			Hex.AppendChar(HexDigits[Bytes[Index] >> 4]);
			Hex.AppendChar(HexDigits[Bytes[Index] & 15]);
		}
		return Hex;
	}

	/** @return an empty text when it is not hexadecimal. */
	static FString ToLowerHex(const FString& Text)
	{
		FString Lower;
		for (int32 Index = 0; Index < Text.Len(); ++Index)
		{
			const int32 Digit = FString(HexDigits).Find(Text.Mid(Index, 1), ESearchCase::IgnoreCase, ESearchDir::FromStart);
			if (Digit == INDEX_NONE)
			{
				return FString();
			}
			Lower.AppendChar(HexDigits[Digit]);
		}
		return Lower;
	}

	static bool ParseAs(const FKind& Kind, const FString& Text, FCorvaneHashWish& Wish)
	{
		FString Name = Text;
		FString Hex;
		const bool bExpects = Text.Split(TEXT(":"), &Name, &Hex, ESearchCase::CaseSensitive, ESearchDir::FromStart);
		const FString Expected = ToLowerHex(Hex);
		if (!Name.Equals(Kind.Name, ESearchCase::IgnoreCase) || (bExpects && Expected.Len() != 2 * Kind.DigestSize))
		{
			return false;
		}
		Wish.Kind = Kind.Kind;
		Wish.Expected = Expected;
		return true;
	}
} // namespace CorvaneFileHash

bool FCorvaneHashWish::Parse(const FString& Text, FCorvaneHashWish& Wish)
{
	if (Text.IsEmpty())
	{
		return true;
	}
	for (const CorvaneFileHash::FKind& Known : CorvaneFileHash::Kinds)
	{
		if (CorvaneFileHash::ParseAs(Known, Text, Wish))
		{
			return true;
		}
	}
	return false;
}

void FCorvaneFileHash::Update(const uint8* Bytes, int64 Count)
{
	switch (Kind)
	{
	case ECorvaneHashKind::Md5:
		Md5.Update(Bytes, static_cast<uint64>(Count));
		break;
	case ECorvaneHashKind::Sha1:
		Sha1.Update(Bytes, static_cast<uint64>(Count));
		break;
	case ECorvaneHashKind::Sha256:
		Sha256.Update(Bytes, Count);
		break;
	case ECorvaneHashKind::None:
		break;
	}
}

FString FCorvaneFileHash::Final()
{
	uint8 Digest[CorvaneFileHash::LongestDigest] = {};
	switch (Kind)
	{
	case ECorvaneHashKind::Md5:
		Md5.Final(Digest);
		return CorvaneFileHash::ToHex(Digest, 16);
	case ECorvaneHashKind::Sha1:
		Sha1.Final();
		Sha1.GetHash(Digest);
		return CorvaneFileHash::ToHex(Digest, 20);
	case ECorvaneHashKind::Sha256:
		Sha256.Final(Digest);
		return CorvaneFileHash::ToHex(Digest, FCorvaneSha256::DigestSize);
	case ECorvaneHashKind::None:
		break;
	}
	return FString();
}

FString CorvaneSha256Of(const uint8* Bytes, int64 Count)
{
	uint8 Digest[FCorvaneSha256::DigestSize];
	FCorvaneSha256 Hash;
	Hash.Update(Bytes, Count);
	Hash.Final(Digest);
	return CorvaneFileHash::ToHex(Digest, FCorvaneSha256::DigestSize);
}
