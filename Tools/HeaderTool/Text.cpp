#include "Text.h"

#include "Diagnostics.h"

#include <bit>

namespace HeaderTool
{
	namespace
	{
		/** Letters after a backslash, and what they stand for. */
		constexpr std::string_view escapeLetters = "nrt\\\"'";
		constexpr std::string_view escapeValues = "\n\r\t\\\"'";

		/** @return the bytes of the character that the text begins with; 0 when it begins with none. */
		size_t characterLength(std::string_view text)
		{
			constexpr unsigned smallest[] = {0, 0, 0x80, 0x800, 0x10000}; // what a character of so many bytes is for
			const unsigned char first = static_cast<unsigned char>(text.front());
			if (first < 0x80)
			{
				return 1;
			}
			const size_t length = static_cast<size_t>(std::countl_one(first));
			if (length < 2 || length > 4 || length > text.size())
			{
				return 0;
			}
			unsigned code = first & (0x7Fu >> length);
			for (const char c : text.substr(1, length - 1))
			{
				const unsigned byte = static_cast<unsigned char>(c);
				if ((byte & 0xC0u) != 0x80)
				{
					return 0;
				}
				code = code << 6 | (byte & 0x3Fu);
			}
			const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
			return code < smallest[length] || code > 0x10FFFF || isSurrogate ? 0 : length;
		}
	} // namespace

	size_t findNonUtf8(std::string_view text)
	{
		size_t place = 0;
		for (size_t length = 1; place < text.size() && length > 0; place += length)
		{
			length = characterLength(text.substr(place));
		}
		return place;
	}

	std::string unescape(std::string_view body, int line)
	{
		std::string value;
		for (size_t i = 0; i < body.size(); ++i)
		{
			if (body[i] != '\\')
			{
				value += body[i];
				continue;
			}
			const char letter = body[++i]; // the lexer lets no literal end in a backslash
			if (const size_t known = escapeLetters.find(letter); known != std::string_view::npos)
			{
				value += escapeValues[known];
			}
			else
			{
				fail(line, "the escape '\\{}' is not read here; write the character itself", letter);
			}
		}
		return value;
	}

	std::string quote(std::string_view value)
	{
		std::string literal = "\"";
		for (const char c : value)
		{
			const unsigned char byte = static_cast<unsigned char>(c);
			if (c == '"' || c == '\\' || c == '\n')
			{
				literal += '\\';
				literal += c == '\n' ? 'n' : c;
			}
			else if (byte < 0x20 || byte == 0x7F)
			{
				literal += fmt::format("\\{:03o}", byte); // three digits, so that a digit after it is not taken in
			}
			else
			{
				literal += c;
			}
		}
		return literal + '"';
	}
} // namespace HeaderTool
