#include "Utf8Decoding.h"

#include "Host/LargePages.h"

#include <array>
#include <bit>
#include <cstring>

namespace
{
	constexpr TCHAR replacementUnit = 0xFFFD;
	constexpr size_t blockSize = sizeof(uint64);
	/** Decoded in pieces that stay in the processor's cache: memory for a large text is written once. */
	constexpr size_t unitsPerPiece = 8 << 10;

	/** How a character of several bytes begins, and the smallest one that needs so many. */
	struct FForm
	{
		uint8 Length;
		uint8 LeadMask;
		char32_t Smallest;
	};

	FForm formOf(uint8 Lead)
	{
		if (Lead < 0xC2 || Lead > 0xF4) // never begins a character, or only an overlong one
		{
			return {1, 0, 0};
		}
		return Lead < 0xE0 ? FForm{2, 0x1F, 0x80} : Lead < 0xF0 ? FForm{3, 0x0F, 0x800} : FForm{4, 0x07, 0x10000};
	}

	/** Reads one character; moves Position after it, or after one byte when it is not well-formed. */
	char32_t readUtf8(std::string_view Bytes, size_t& Position)
	{
		const size_t Start = Position++;
		const uint8 Lead = static_cast<uint8>(Bytes[Start]);
		if (Lead < 0x80)
		{
			return Lead;
		}
		const FForm Form = formOf(Lead);
		if (Form.Length == 1 || Start + Form.Length > Bytes.size())
		{
			return replacementUnit;
		}
		char32_t Point = Lead & Form.LeadMask;
		for (size_t At = Start + 1; At < Start + Form.Length; ++At)
		{
			const uint8 Byte = static_cast<uint8>(Bytes[At]);
			if ((Byte & 0xC0) != 0x80)
			{
				return replacementUnit;
			}
			Point = Point << 6 | (Byte & 0x3F);
		}
		if (Point < Form.Smallest || Point > 0x10FFFF || (Point >= 0xD800 && Point < 0xE000))
		{
			return replacementUnit;
		}
		Position = Start + Form.Length;
		return Point;
	}

	TCHAR* writeUtf16(char32_t Point, TCHAR* To)
	{
		if (Point < 0x10000)
		{
			*To++ = static_cast<TCHAR>(Point);
			return To;
		}
		*To++ = static_cast<TCHAR>(0xD7C0 + (Point >> 10));
		*To++ = static_cast<TCHAR>(0xDC00 + (Point & 0x3FF));
		return To;
	}

	uint64 loadBlock(const char* Bytes)
	{
		uint64 Block;
		std::memcpy(&Block, Bytes, blockSize);
		return Block;
	}

	/** @return how many bytes of a block come before the first that may begin a character of several; reads two bytes beyond it. */
	size_t countSingleBytes(const char* Bytes)
	{
		constexpr uint64 topBits = 0x8080808080808080;
		const uint64 Block = loadBlock(Bytes);
		if ((Block & topBits) == 0)
		{
			return blockSize;
		}
		const uint64 Second = loadBlock(Bytes + 1);
		const uint64 Third = loadBlock(Bytes + 2);
		const uint64 Begins = Block & Block << 1; // 11......
		const uint64 IsShort = ~(Block << 2); // 110.....
		const uint64 GoesOn = Second & ~(Second << 1) & (IsShort | (Third & ~(Third << 1))); // with 10......
		const uint64 Found = Begins & GoesOn & topBits;
		constexpr bool bLowFirst = std::endian::native == std::endian::little;
		return static_cast<size_t>(bLowFirst ? std::countr_zero(Found) : std::countl_zero(Found)) / 8; // of nothing it is the block
	}

	/** Writes a block of bytes that are characters, or none, each by itself. */
	void writeSingleBytes(const char* Bytes, TCHAR* To)
	{
		using FBytes [[gnu::vector_size(blockSize)]] = uint8;
		using FUnits [[gnu::vector_size(blockSize * 2)]] = uint16; // plain loops come out several times slower, by compiler
		FBytes Block;
		std::memcpy(&Block, Bytes, sizeof(Block));
		const FUnits Units = __builtin_convertvector(Block, FUnits);
		const FUnits Exchanged = reinterpret_cast<FUnits>(Units >= 0x80);
		const FUnits Written = (Units & ~Exchanged) | (Exchanged & static_cast<uint16>(replacementUnit));
		std::memcpy(To, &Written, sizeof(Written));
	}

	/** Decodes until the piece has no room for another block. @return the end of what was written. */
	TCHAR* decodePiece(std::string_view Bytes, size_t& At, TCHAR* To, const TCHAR* End)
	{
		while (At < Bytes.size() && To + blockSize <= End)
		{
			if (At + blockSize + 2 <= Bytes.size())
			{
				const size_t Number = countSingleBytes(Bytes.data() + At);
				writeSingleBytes(Bytes.data() + At, To);
				At += Number;
				To += Number;
				if (Number == blockSize)
				{
					continue;
				}
			}
			do // text of another script goes on like this
			{
				To = writeUtf16(readUtf8(Bytes, At), To);
			} while (At < Bytes.size() && To + 2 <= End && static_cast<uint8>(Bytes[At]) >= 0xC2);
		}
		return To;
	}
} // namespace

std::basic_string<TCHAR> utf16FromUtf8(std::string_view Bytes)
{
	std::basic_string<TCHAR> Units;
	Units.reserve(Bytes.size()); // no character has more units than bytes
	preferLargePages(Units.data(), static_cast<int64>(Bytes.size() * sizeof(TCHAR)));
	std::array<TCHAR, unitsPerPiece> Piece;
	for (size_t At = 0; At < Bytes.size();)
	{
		const TCHAR* const Begin = Piece.data();
		Units.append(Begin, static_cast<const TCHAR*>(decodePiece(Bytes, At, Piece.data(), Begin + Piece.size())));
	}
	return Units;
}
