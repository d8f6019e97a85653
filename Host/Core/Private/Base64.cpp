#include "Misc/Base64.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace
{
	// Done in pieces that stay in the processor's cache: a second copy of a large text would be dear.
	constexpr int64 bytesPerPiece = 3 * 4096;
	constexpr int64 digitsPerPiece = bytesPerPiece / 3 * 4;

	/** The two digits of each twelve bits. */
	constexpr auto digitPairs = []
	{
		constexpr std::string_view Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
		std::array<std::array<TCHAR, 2>, 64 * 64> Pairs{};
		for (size_t Bits = 0; Bits < Pairs.size(); ++Bits)
		{
			Pairs[Bits] = {static_cast<TCHAR>(Digits[Bits / 64]), static_cast<TCHAR>(Digits[Bits % 64])};
		}
		return Pairs;
	}();

	TCHAR* encodeTriple(uint32 First, uint32 Second, uint32 Third, TCHAR* To)
	{
		const uint32 Bits = First << 16 | Second << 8 | Third;
		std::memcpy(To, digitPairs[Bits >> 12].data(), sizeof(digitPairs[0]));
		std::memcpy(To + 2, digitPairs[Bits & 0xFFF].data(), sizeof(digitPairs[0]));
		return To + 4;
	}

	/** Encodes at most one piece. @return the number of units. */
	int64 encodePiece(const uint8* Bytes, int64 Number, TCHAR* To)
	{
		TCHAR* Next = To;
		const uint8* const EndOfWhole = Bytes + Number / 3 * 3;
		for (; Bytes < EndOfWhole; Bytes += 3)
		{
			Next = encodeTriple(Bytes[0], Bytes[1], Bytes[2], Next);
		}
		if (const int64 Left = Number % 3)
		{
			Next = encodeTriple(Bytes[0], Left == 2 ? Bytes[1] : 0, 0, Next);
			std::fill(Next - (3 - Left), Next, TCHAR('='));
		}
		return Next - To;
	}

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
	std::array<TCHAR, digitsPerPiece> Digits;
	for (int64 At = 0; At < Length; At += bytesPerPiece)
	{
		const int64 Number = std::min<int64>(bytesPerPiece, Length - At);
		Text.AppendChars(Digits.data(), static_cast<int32>(encodePiece(Source + At, Number, Digits.data())));
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
