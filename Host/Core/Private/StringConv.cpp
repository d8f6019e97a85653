#include "Containers/StringConv.h"

#include "Utf8Decoding.h"

#include <algorithm>

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

	/** Most texts are ASCII from end to end, and that part is copied in one go: a header costs little then. */
	std::string asciiPrefix(std::u16string_view Text)
	{
		return std::string(Text.begin(), std::find_if(Text.begin(), Text.end(), [](char16_t Unit) { return Unit >= 0x80; }));
	}
} // namespace

FTCHARToUTF8::FTCHARToUTF8(std::u16string_view Units)
	: Bytes(asciiPrefix(Units))
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
	: Units(utf16FromUtf8(Bytes))
{
}
