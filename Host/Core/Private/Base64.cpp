#include "Misc/Base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace
{
	// Done in pieces: the library wants narrow text, and a second copy of a large text would be dear.
	constexpr int64 bytesPerPiece = 3 * 4096;
	constexpr int64 digitsPerPiece = bytesPerPiece / 3 * 4;

	bool isDigit(TCHAR Unit)
	{
		return (Unit >= 'A' && Unit <= 'Z') || (Unit >= 'a' && Unit <= 'z') || (Unit >= '0' && Unit <= '9') || Unit == '+' || Unit == '/';
	}

	int64 lengthWithoutPadding(const FString& Text)
	{
		int32 Length = Text.Len();
		while (Length > 0 && Text[Length - 1] == '=')
		{
			--Length;
		}
		return Length;
	}

	/** Decodes at most one piece. @return false when a unit is no digit. */
	bool decodePiece(const TCHAR* Units, int64 Number, TArray<uint8>& OutDest)
	{
		std::array<uint8, digitsPerPiece> Digits;
		std::array<uint8, bytesPerPiece> Bytes;
		if (!std::all_of(Units, Units + Number, isDigit))
		{
			return false;
		}
		const auto End = std::transform(Units, Units + Number, Digits.begin(), [](TCHAR Unit) { return static_cast<uint8>(Unit); });
		const int64 Whole = (Number + 3) / 4 * 4;
		std::fill(End, Digits.begin() + Whole, 'A'); // zero bits, whose bytes are not taken
		EVP_DecodeBlock(Bytes.data(), Digits.data(), static_cast<int>(Whole));
		OutDest.Append(Bytes.data(), static_cast<int32>(Number * 3 / 4));
		return true;
	}
} // namespace

FString FBase64::Encode(const uint8* Source, uint32 Length)
{
	FString Text;
	Text.Reserve(static_cast<int32>((static_cast<int64>(Length) + 2) / 3 * 4));
	std::array<uint8, digitsPerPiece + 1> Digits; // and the library's zero after them
	for (int64 At = 0; At < Length; At += bytesPerPiece)
	{
		const int64 Number = std::min<int64>(bytesPerPiece, Length - At);
		const int Written = EVP_EncodeBlock(Digits.data(), Source + At, static_cast<int>(Number));
		Text.AppendChars(reinterpret_cast<const ANSICHAR*>(Digits.data()), Written);
	}
	return Text;
}

bool FBase64::Decode(const FString& Source, TArray<uint8>& OutDest)
{
	const int64 Length = lengthWithoutPadding(Source);
	OutDest.Reset();
	OutDest.Reserve(static_cast<int32>(Length * 3 / 4));
	for (int64 At = 0; At < Length; At += digitsPerPiece)
	{
		if (!decodePiece(*Source + At, std::min(digitsPerPiece, Length - At), OutDest))
		{
			return false;
		}
	}
	return Length % 4 != 1; // six bits make no byte
}
