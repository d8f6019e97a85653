#include "Containers/StringConv.h"

namespace
{
	constexpr char32_t replacement = 0xFFFD;

	void appendUtf8(std::string& Bytes, char32_t Point)
	{
		const auto Add = [&Bytes](char32_t Byte) { Bytes.push_back(static_cast<char>(Byte)); };
		if (Point < 0x80)
		{
			Add(Point);
		}
		else if (Point < 0x800)
		{
			Add(0xC0 | Point >> 6);
			Add(0x80 | (Point & 0x3F));
		}
		else if (Point < 0x10000)
		{
			Add(0xE0 | Point >> 12);
			Add(0x80 | (Point >> 6 & 0x3F));
			Add(0x80 | (Point & 0x3F));
		}
		else
		{
			Add(0xF0 | Point >> 18);
			Add(0x80 | (Point >> 12 & 0x3F));
			Add(0x80 | (Point >> 6 & 0x3F));
			Add(0x80 | (Point & 0x3F));
		}
	}

	/** Reads one character; moves Position behind it, or behind one byte when it is not well-formed. */
	char32_t readUtf8(std::string_view Bytes, size_t& Position)
	{
		struct FForm
		{
			uint8 Mask, Lead;
			size_t Length;
			char32_t Smallest;
		};
		static constexpr FForm forms[] = {{0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
		const auto Byte = [&](size_t At) { return static_cast<uint8>(Bytes[At]); };
		const uint8 First = Byte(Position);
		const size_t Start = Position++;
		for (const FForm& Form : forms)
		{
			if ((First & Form.Mask) != Form.Lead || Start + Form.Length > Bytes.size())
			{
				continue;
			}
			char32_t Point = First & static_cast<uint8>(~Form.Mask);
			for (size_t At = Start + 1; At < Start + Form.Length; ++At)
			{
				if ((Byte(At) & 0xC0) != 0x80)
				{
					return replacement;
				}
				Point = Point << 6 | (Byte(At) & 0x3F);
			}
			if (Point < Form.Smallest || Point > 0x10FFFF || (Point >= 0xD800 && Point < 0xE000))
			{
				return replacement;
			}
			Position = Start + Form.Length;
			return Point;
		}
		return replacement;
	}
} // namespace

FTCHARToUTF8::FTCHARToUTF8(std::u16string_view Units)
{
	Bytes.reserve(Units.size());
	for (size_t At = 0; At < Units.size(); ++At)
	{
		const char32_t Unit = Units[At];
		if (Unit < 0xD800 || Unit > 0xDFFF)
		{
			appendUtf8(Bytes, Unit);
		}
		else if (Unit < 0xDC00 && At + 1 < Units.size() && (Units[At + 1] & 0xFC00) == 0xDC00)
		{
			appendUtf8(Bytes, 0x10000 + ((Unit & 0x3FF) << 10) + (Units[++At] & 0x3FFu));
		}
		else
		{
			appendUtf8(Bytes, replacement);
		}
	}
}

FUTF8ToTCHAR::FUTF8ToTCHAR(std::string_view Bytes)
{
	Units.reserve(Bytes.size());
	for (size_t At = 0; At < Bytes.size();)
	{
		if (static_cast<uint8>(Bytes[At]) < 0x80)
		{
			Units.push_back(static_cast<TCHAR>(Bytes[At++]));
			continue;
		}
		const char32_t Point = readUtf8(Bytes, At);
		if (Point < 0x10000)
		{
			Units.push_back(static_cast<TCHAR>(Point));
		}
		else
		{
			Units.push_back(static_cast<TCHAR>(0xD7C0 + (Point >> 10)));
			Units.push_back(static_cast<TCHAR>(0xDC00 + (Point & 0x3FF)));
		}
	}
}
