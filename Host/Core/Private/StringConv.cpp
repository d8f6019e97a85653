#include "Containers/StringConv.h"

#include <algorithm>
#include <type_traits>

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

	/** Most texts are ASCII from end to end, and that part is copied in one go: a header or a body costs little then. */
	template <class Result, class View>
	Result asciiPrefix(View Text)
	{
		const auto End = std::find_if(
			Text.begin(), Text.end(), [](auto Unit) { return static_cast<std::make_unsigned_t<decltype(Unit)>>(Unit) >= 0x80; });
		return Result(Text.begin(), End);
	}

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
		const FForm Form = formOf(Lead);
		if (Form.Length == 1 || Start + Form.Length > Bytes.size())
		{
			return replacement;
		}
		char32_t Point = Lead & Form.LeadMask;
		for (size_t At = Start + 1; At < Start + Form.Length; ++At)
		{
			const uint8 Byte = static_cast<uint8>(Bytes[At]);
			if ((Byte & 0xC0) != 0x80)
			{
				return replacement;
			}
			Point = Point << 6 | (Byte & 0x3F);
		}
		if (Point < Form.Smallest || Point > 0x10FFFF || (Point >= 0xD800 && Point < 0xE000))
		{
			return replacement;
		}
		Position = Start + Form.Length;
		return Point;
	}
} // namespace

FTCHARToUTF8::FTCHARToUTF8(std::u16string_view Units)
	: Bytes(asciiPrefix<std::string>(Units))
{
	Bytes.reserve(Units.size());
	for (size_t At = Bytes.size(); At < Units.size(); ++At)
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
	: Units(asciiPrefix<std::u16string>(Bytes))
{
	size_t At = Units.size();
	Units.resize(Bytes.size()); // no character has more units than bytes
	TCHAR* Next = Units.data() + At;
	while (At < Bytes.size())
	{
		if (static_cast<uint8>(Bytes[At]) < 0x80)
		{
			*Next++ = static_cast<TCHAR>(Bytes[At++]);
			continue;
		}
		const char32_t Point = readUtf8(Bytes, At);
		if (Point < 0x10000)
		{
			*Next++ = static_cast<TCHAR>(Point);
		}
		else
		{
			*Next++ = static_cast<TCHAR>(0xD7C0 + (Point >> 10));
			*Next++ = static_cast<TCHAR>(0xDC00 + (Point & 0x3FF));
		}
	}
	Units.resize(static_cast<size_t>(Next - Units.data()));
}
