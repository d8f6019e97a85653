#include "Lab/Cassettes/Cassette.h"

#include <array>
#include <charconv>
#include <fstream>
#include <stdexcept>

namespace Lab
{
	namespace
	{
		constexpr std::size_t widest = 110; // bytes of a line, escaped
		constexpr Milliseconds longestPause = std::chrono::hours(24);

		std::string escaped(unsigned char byte)
		{
			constexpr std::string_view digits = "0123456789abcdef";
			switch (byte)
			{
			case '\r':
				return "\\r";
			case '\n':
				return "\\n";
			case '\t':
				return "\\t";
			case '\\':
				return "\\\\";
			default:
				break;
			}
			const bool isVisible = byte >= ' ' && byte < 0x7F;
			return isVisible ? std::string(1, static_cast<char>(byte)) : std::string("\\x") + digits[byte >> 4] + digits[byte & 15];
		}

		/** A space at the end of a line would not survive every editor. */
		std::string escapedAtEnd(std::string line)
		{
			if (line.ends_with(' '))
			{
				line.replace(line.size() - 1, 1, "\\x20");
			}
			return line;
		}

		std::string escaped(std::string_view bytes)
		{
			std::string text;
			for (const char byte : bytes)
			{
				text += escaped(static_cast<unsigned char>(byte));
			}
			return text;
		}

		void appendLines(std::string& text, char mark, std::string_view bytes)
		{
			std::string line;
			for (std::size_t place = 0; place < bytes.size(); ++place)
			{
				line += escaped(static_cast<unsigned char>(bytes[place]));
				if (bytes[place] == '\n' || line.size() >= widest || place + 1 == bytes.size())
				{
					text.append(1, mark).append(" ").append(escapedAtEnd(std::exchange(line, {}))).append("\n");
				}
			}
		}

		char unescape(std::string_view text, std::size_t& place)
		{
			const char kind = place + 1 < text.size() ? text[++place] : '\0';
			switch (kind)
			{
			case 'r':
				return '\r';
			case 'n':
				return '\n';
			case 't':
				return '\t';
			case '\\':
				return '\\';
			default:
				break;
			}
			unsigned char byte = 0;
			const char* const digits = text.data() + place + 1;
			if (kind != 'x' || place + 2 >= text.size() || std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2)
			{
				throw std::invalid_argument("a backslash stands before r, n, t, x with two digits, or another backslash");
			}
			place += 2;
			return static_cast<char>(byte);
		}

		std::string unescaped(std::string_view text)
		{
			std::string bytes;
			for (std::size_t place = 0; place < text.size(); ++place)
			{
				bytes += text[place] == '\\' ? unescape(text, place) : text[place];
			}
			return bytes;
		}

		/** Reads a cassette line by line. */
		class Reader
		{
		public:
			void take(const std::string& line)
			{
				if (line.empty() || line.starts_with('#'))
				{
					return;
				}
				if (line.starts_with("request"))
				{
					cassette.emplace_back();
					return;
				}
				if (cassette.empty())
				{
					throw std::invalid_argument("an exchange begins with 'request'");
				}
				takeInside(line, cassette.back());
			}

			Cassette cassette;

		private:
			static void takeInside(const std::string& line, RecordedExchange& exchange)
			{
				const std::string rest = line.substr(std::min<std::size_t>(2, line.size()));
				std::vector<RawPiece>& pieces = exchange.answer.pieces;
				switch (line.front())
				{
				case '>':
					exchange.request += unescaped(rest);
					return;
				case '<':
					pieces.resize(std::max<std::size_t>(1, pieces.size()));
					pieces.back().bytes += unescaped(rest);
					return;
				case '@':
					pieces.push_back({pauseIn(rest), {}});
					return;
				default:
					break;
				}
				if (line != "end close" && line != "end reset")
				{
					throw std::invalid_argument("a line begins with request, >, <, @, end close or end reset");
				}
				exchange.answer.end = line == "end close" ? RawEnd::Close : RawEnd::Reset;
			}

			static Milliseconds pauseIn(const std::string& text)
			{
				double number = 0;
				const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
				const bool isPause =
					error == std::errc() && end == text.data() + text.size() && number >= 0 && number <= longestPause.count();
				return isPause ? Milliseconds(number)
							   : throw std::invalid_argument("after @ stands a number of milliseconds, a day at most");
			}
		};

		std::string printed(Milliseconds pause)
		{
			std::array<char, 32> digits{};
			return std::string(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(),
												  std::min(pause, longestPause).count(), std::chars_format::fixed, 1)
												  .ptr);
		}
	} // namespace

	std::string requestLineOf(std::string_view request)
	{
		const std::string_view line = request.substr(0, request.find("\r\n"));
		return std::string(line.substr(0, line.rfind(' ')));
	}

	std::string print(const RecordedExchange& exchange)
	{
		std::string text = "\nrequest " + escaped(requestLineOf(exchange.request)) + '\n';
		appendLines(text, '>', exchange.request);
		for (const RawPiece& piece : exchange.answer.pieces)
		{
			text += "@ " + printed(piece.pause) + '\n';
			appendLines(text, '<', piece.bytes);
		}
		return text + (exchange.answer.end == RawEnd::Reset ? "end reset\n" : "end close\n");
	}

	Cassette parseCassette(std::istream& text)
	{
		std::string line;
		std::getline(text, line);
		if (line + '\n' != cassetteHead)
		{
			throw std::invalid_argument("this is no cassette: its first line has to be '" + std::string(cassetteHead, 18) + '\'');
		}
		Reader reader;
		for (int number = 2; std::getline(text, line); ++number)
		{
			try
			{
				reader.take(line);
			}
			catch (const std::invalid_argument& fault)
			{
				throw std::invalid_argument("line " + std::to_string(number) + ": " + fault.what());
			}
		}
		return std::move(reader.cassette);
	}

	Cassette loadCassette(const std::string& path)
	{
		std::ifstream file(path, std::ios::binary);
		if (!file)
		{
			throw std::runtime_error("cannot read " + path);
		}
		try
		{
			return parseCassette(file);
		}
		catch (const std::invalid_argument& fault)
		{
			throw std::invalid_argument(path + ": " + fault.what());
		}
	}
} // namespace Lab
