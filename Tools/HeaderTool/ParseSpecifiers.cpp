#include "ParseParts.h"
#include "Utf8.h"

#include <fmt/format.h>

namespace HeaderTool
{
	namespace
	{
		/** What stands behind the '=': strings, one word, or one number with its sign. */
		std::string parseValue(TokenReader& reader, const std::string& key)
		{
			if (reader.peek().kind == TokenKind::String)
			{
				return parseText(reader);
			}
			const std::string sign = reader.acceptSymbol("-") ? "-" : "";
			const TokenKind kind = reader.peek().kind;
			if (kind != TokenKind::Number && (kind != TokenKind::Identifier || !sign.empty() || reader.isWord("TEXT")))
			{
				reader.fail(fmt::format("expected the value of '{}', found {}", key, reader.found()));
			}
			return sign + reader.next().text;
		}

		Specifier parseSpecifier(TokenReader& reader)
		{
			Specifier specifier;
			specifier.line = reader.line();
			specifier.key = reader.expectName("a specifier");
			if (reader.acceptSymbol("="))
			{
				specifier.value = parseValue(reader, specifier.key);
			}
			return specifier;
		}

		/** `(A, B = "x")`; the list may be empty. */
		template <class Parse>
		void parseList(TokenReader& reader, Parse parseEntry)
		{
			reader.expectSymbol("(", "before the specifiers");
			if (reader.acceptSymbol(")"))
			{
				return;
			}
			do
			{
				parseEntry();
			} while (reader.acceptSymbol(","));
			reader.expectSymbol(")", "or ',' after a specifier");
		}
	} // namespace

	std::string parseText(TokenReader& reader)
	{
		std::string text;
		while (reader.peek().kind == TokenKind::String)
		{
			if (!reader.peek().prefix.empty())
			{
				reader.fail(fmt::format("a string with the prefix {} is not read here", reader.peek().prefix));
			}
			text += reader.next().text;
		}
		if (findNonUtf8(text) < text.size())
		{
			reader.fail("the escapes of this text make no UTF-8");
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
				if (sameName(reader.peek().text, "meta") && reader.isSymbol("=", 1))
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
