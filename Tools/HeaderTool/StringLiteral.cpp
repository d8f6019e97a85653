#include "StringLiteral.h"

#include "Diagnostics.h"

#include <charconv>
#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		/** Letters after a backslash, and what they stand for. */
		constexpr std::string_view escapeLetters = "nrtabfv\\\"'?";
		constexpr std::string_view escapeValues = "\n\r\t\a\b\f\v\\\"'?";

		void appendUtf8(std::string& out, unsigned long code, int line)
		{
			const auto tail = [&out](unsigned long bits) { out += static_cast<char>(0x80 | (bits & 0x3F)); };
			if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
			{
				throw ParseError(line, "an escape in this string names no Unicode character");
			}
			if (code < 0x80)
			{
				out += static_cast<char>(code);
			}
			else if (code < 0x800)
			{
				out += static_cast<char>(0xC0 | (code >> 6));
				tail(code);
			}
			else if (code < 0x10000)
			{
				out += static_cast<char>(0xE0 | (code >> 12));
				tail(code >> 6);
				tail(code);
			}
			else
			{
				out += static_cast<char>(0xF0 | (code >> 18));
				tail(code >> 12);
				tail(code >> 6);
				tail(code);
			}
		}

		/** Reads up to `most` digits. @return false when there are fewer than `least`. */
		bool takeCode(std::string_view& text, int base, size_t least, size_t most, unsigned long& code)
		{
			const std::string_view digits = text.substr(0, most);
			const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, base);
			const size_t count = static_cast<size_t>(end - digits.data());
			text.remove_prefix(count);
			return error == std::errc() && count >= least;
		}

		void appendEscape(std::string& out, std::string_view& text, int line)
		{
			const char letter = text.front();
			if (const size_t known = escapeLetters.find(letter); known != std::string_view::npos)
			{
				out += escapeValues[known];
				text.remove_prefix(1);
				return;
			}
			const bool octal = letter >= '0' && letter <= '7';
			const bool unicode = letter == 'u' || letter == 'U';
			text.remove_prefix(octal ? 0 : 1);
			const size_t width = octal ? 3 : letter == 'U' ? 8 : letter == 'u' ? 4 : 2;
			unsigned long code = 0;
			if (!(octal || unicode || letter == 'x') || !takeCode(text, octal ? 8 : 16, unicode ? width : 1, width, code))
			{
				throw ParseError(line, fmt::format("unknown escape '\\{}' in a string", letter));
			}
			if (unicode)
			{
				appendUtf8(out, code, line);
			}
			else
			{
				out += static_cast<char>(code);
			}
		}
	} // namespace

	size_t quotedLength(std::string_view text, int line)
	{
		for (size_t i = 1; i < text.size() && text[i] != '\n'; ++i)
		{
			if (text[i] == text.front())
			{
				return i + 1;
			}
			i += text[i] == '\\';
		}
		throw ParseError(line, "this quoted text does not end on its line");
	}

	size_t rawLength(std::string_view text, int line)
	{
		const std::string delimiter = fmt::format("){}\"", text.substr(1, text.find('(') - 1));
		const size_t end = text.find(delimiter);
		if (end == std::string_view::npos)
		{
			throw ParseError(line, "this raw string does not end");
		}
		return end + delimiter.size();
	}

	std::string unescape(std::string_view body, int line)
	{
		std::string value;
		while (!body.empty())
		{
			const char c = body.front();
			body.remove_prefix(1);
			if (c == '\\')
			{
				appendEscape(value, body, line);
			}
			else
			{
				value += c;
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
			if (c == '"' || c == '\\')
			{
				literal += '\\';
				literal += c;
			}
			else if (c == '\n')
			{
				literal += "\\n";
			}
			else if (byte < 0x20 || byte == 0x7F)
			{
				literal += fmt::format("\\{:03o}", byte); // three digits, so that a digit behind it is not taken in
			}
			else
			{
				literal += c;
			}
		}
		return literal + '"';
	}
} // namespace HeaderTool
