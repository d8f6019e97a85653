#include "Parser.h"
#include "Text.h"

namespace HeaderTool
{
	namespace
	{
		/** What stands after the '=': strings, one word, or one number with its sign. */
		std::string parseValue(TokenReader& reader, const std::string& key)
		{
			if (reader.peek().kind == TokenKind::String)
			{
				return parseText(reader);
			}
			const std::string sign = reader.accept("-") ? "-" : "";
			const TokenKind kind = reader.peek().kind;
			if (kind != TokenKind::Number && (kind != TokenKind::Identifier || !sign.empty()))
			{
				fail(reader.line(), "expected the value of '{}', found {}", key, reader.found());
			}
			return sign + reader.next().text;
		}

		Specifier parseSpecifier(TokenReader& reader)
		{
			Specifier specifier;
			specifier.line = reader.line();
			specifier.key = reader.expectName("a specifier");
			if (reader.accept("="))
			{
				specifier.value = parseValue(reader, specifier.key);
			}
			return specifier;
		}

		/** `(A, B = "x")`; the list may be empty. */
		template <class Parse>
		void parseList(TokenReader& reader, Parse parseEntry)
		{
			reader.expect("(", "before the specifiers");
			if (reader.accept(")"))
			{
				return;
			}
			do
			{
				parseEntry();
			} while (reader.accept(","));
			reader.expect(")", "or ',' after a specifier");
		}
	} // namespace

	std::string parseText(TokenReader& reader)
	{
		std::string text;
		while (reader.peek().kind == TokenKind::String)
		{
			const Token& token = reader.next();
			text += unescape(token.text.substr(1, token.text.size() - 2), token.line);
		}
		return text;
	}

	Specifiers parseSpecifiers(TokenReader& reader)
	{
		Specifiers specifiers;
		const auto parseMeta = [&] { specifiers.meta.push_back(parseSpecifier(reader)); };
		parseList(reader,
			[&]
			{
				if (sameName(reader.peek().text, "meta") && reader.is("=", 1))
				{
					reader.next();
					reader.next();
					parseList(reader, parseMeta);
				}
				else
				{
					specifiers.entries.push_back(parseSpecifier(reader));
				}
			});
		return specifiers;
	}
} // namespace HeaderTool
