#include "Lexer.h"

#include "Diagnostics.h"

#include <algorithm>
#include <utility>

namespace HeaderTool
{
	namespace
	{
		constexpr std::string_view blanks = " \t\v\f\n";

		bool isDigit(char c)
		{
			return c >= '0' && c <= '9';
		}

		/** Letters of other alphabets count: they may stand in identifiers and must not end one in the middle. */
		bool isWordCharacter(char c)
		{
			return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
		}

		/** The text after joining continued lines, with the line on which each character stood before. */
		struct JoinedText
		{
			std::string characters;
			std::vector<int> lines;
		};

		JoinedText joinLines(std::string_view text)
		{
			constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
			if (text.starts_with(byteOrderMark))
			{
				text.remove_prefix(byteOrderMark.size());
			}
			JoinedText joined;
			joined.characters.reserve(text.size());
			joined.lines.reserve(text.size() + 1);
			int line = 1;
			for (size_t i = 0; i < text.size(); ++i)
			{
				const std::string_view next = text.substr(i + 1, 2);
				if (text[i] == '\\' && (next.starts_with('\n') || next == "\r\n"))
				{
					i = text.find('\n', i);
					++line;
					continue;
				}
				if (text[i] == '\r' && next.starts_with('\n'))
				{
					continue;
				}
				joined.characters += text[i];
				joined.lines.push_back(line);
				line += text[i] == '\n';
			}
			joined.lines.push_back(line);
			return joined;
		}

		/** @return what a comment says, without the stars at the beginning of its lines. @param comment  with its delimiters. */
		std::string plainText(std::string_view comment)
		{
			comment.remove_prefix(3);
			comment.remove_suffix(2);
			std::string text;
			while (!comment.empty())
			{
				std::string_view line = comment.substr(0, comment.find('\n'));
				comment.remove_prefix(std::min(line.size() + 1, comment.size()));
				line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
				if (line.starts_with('*'))
				{
					line.remove_prefix(line.starts_with("* ") ? 2 : 1);
				}
				line = line.substr(0, line.find_last_not_of(blanks) + 1);
				text.append(text.empty() ? "" : "\n").append(line);
			}
			return text.substr(0, text.find_last_not_of('\n') + 1);
		}

		/** @return what a comment to the end of its line says. @param comment  with its slashes. */
		std::string plainLine(std::string_view comment)
		{
			comment.remove_prefix(std::min(comment.find_first_not_of('/'), comment.size()));
			comment.remove_prefix(std::min(comment.find_first_not_of(blanks), comment.size()));
			return std::string(comment.substr(0, comment.find_last_not_of(blanks) + 1));
		}

		class Lexer
		{
		public:
			explicit Lexer(std::string_view text)
				: source(joinLines(text))
				, rest(source.characters)
			{
			}

			std::vector<Token> run()
			{
				while (skipBlank(), !rest.empty())
				{
					readToken();
				}
				add(TokenKind::End, currentLine(), "");
				return std::move(tokens);
			}

		private:
			int currentLine() const { return source.lines[source.characters.size() - rest.size()]; }

			std::string_view take(size_t count)
			{
				const std::string_view taken = rest.substr(0, count);
				rest.remove_prefix(taken.size());
				return taken;
			}

			template <class Belongs>
			std::string_view takeWhile(Belongs belongs)
			{
				return take(static_cast<size_t>(std::find_if_not(rest.begin(), rest.end(), belongs) - rest.begin()));
			}

			/** @return false when there is no comment here. */
			bool skipComment()
			{
				if (rest.starts_with("//"))
				{
					addLine(take(std::min(rest.find('\n'), rest.size())));
					return true;
				}
				if (rest.starts_with("/*"))
				{
					const size_t end = rest.find("*/", 2);
					if (end == std::string_view::npos)
					{
						fail(currentLine(), "this comment does not end");
					}
					const std::string_view comment = take(end + 2);
					documentation = comment.starts_with("/**") && comment.size() > 4 ? plainText(comment) : "";
					documentationIsLines = false;
					return true;
				}
				return false;
			}

			/** Lines document what follows them, too, unless a block does. @param comment  with its slashes. */
			void addLine(std::string_view comment)
			{
				documentationIsLines = documentationIsLines || documentation.empty();
				if (!lineHasToken && documentationIsLines)
				{
					const std::string line = plainLine(comment);
					documentation.append(documentation.empty() ? "" : "\n").append(line);
				}
			}

			void skipBlank()
			{
				while (!rest.empty())
				{
					if (blanks.find(rest.front()) != blanks.npos)
					{
						lineHasToken = lineHasToken && rest.front() != '\n';
						take(1);
					}
					else if (!skipComment())
					{
						return;
					}
				}
			}

			void add(TokenKind kind, int line, std::string_view text) { tokens.push_back({kind, std::string(text), line, 0, ""}); }

			void readToken()
			{
				std::string comment = std::exchange(documentation, "");
				readPlainToken();
				tokens.back().comment = std::move(comment);
				documentation.clear(); // one inside a directive documents nothing
				documentationIsLines = false;
			}

			void readPlainToken()
			{
				const int line = currentLine();
				const bool first = !lineHasToken;
				lineHasToken = true;
				if (first && rest.front() == '#')
				{
					readDirective(line);
				}
				else if (isDigit(rest.front()))
				{
					add(TokenKind::Number, line, takeWhile([](char c) { return isWordCharacter(c) || c == '.' || c == '\''; }));
				}
				else if (rest.front() == '"' || rest.front() == '\'')
				{
					const TokenKind kind = rest.front() == '"' ? TokenKind::String : TokenKind::Character;
					add(kind, line, take(quotedLength(line)));
				}
				else if (isWordCharacter(rest.front()))
				{
					readWord(line);
				}
				else
				{
					add(TokenKind::Symbol, line, take(rest.starts_with("::") ? 2 : 1));
				}
			}

			void readDirective(int line)
			{
				take(1);
				std::string text;
				while (!rest.empty() && rest.front() != '\n')
				{
					if (skipComment())
					{
						text += ' ';
					}
					else
					{
						// A "//" in quotes is no comment. Apostrophes stay alone: #error lines may hold one.
						text += take(rest.front() == '"' ? quotedLength(line) : 1);
					}
				}
				const size_t begin = std::min(text.find_first_not_of(blanks), text.size());
				add(TokenKind::Directive, line, std::string_view(text).substr(begin, text.find_last_not_of(blanks) + 1 - begin));
			}

			void readWord(int line)
			{
				const std::string_view word = takeWhile(isWordCharacter);
				if (rest.starts_with('"') && word.ends_with('R'))
				{
					fail(line, "raw strings are not read here");
				}
				add(TokenKind::Identifier, line, word);
			}

			/** @return the length of the quoted text that begins here, quotes included. */
			size_t quotedLength(int line) const
			{
				for (size_t i = 1; i < rest.size() && rest[i] != '\n'; ++i)
				{
					if (rest[i] == rest.front())
					{
						return i + 1;
					}
					i += rest[i] == '\\';
				}
				fail(line, "this quoted text does not end on its line");
			}

			JoinedText source;
			std::string_view rest;
			std::vector<Token> tokens;
			std::string documentation; // of the token that comes next
			bool documentationIsLines = false; // not made of a block
			bool lineHasToken = false;
		};
	} // namespace

	std::vector<Token> lex(std::string_view text)
	{
		return Lexer(text).run();
	}
} // namespace HeaderTool
