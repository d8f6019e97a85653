#include "ParseParts.h"

#include <fmt/format.h>

namespace HeaderTool
{
	TypeHead parseTypeHead(TokenReader& reader, std::string_view keyword, std::string_view macro)
	{
		TypeHead head;
		if (!reader.acceptWord(keyword))
		{
			reader.fail(fmt::format("expected '{}' behind {}, found {}", keyword, macro, reader.found()));
		}
		if (reader.peek().text.ends_with("_API"))
		{
			reader.next();
		}
		head.line = reader.line();
		head.name = reader.expectName(keyword == "class" ? "a class" : "a struct");
		reader.acceptWord("final");
		if (reader.acceptSymbol(":"))
		{
			do
			{
				if (!reader.acceptWord("public"))
				{
					reader.fail(fmt::format("expected 'public' before a base of {}, found {}", head.name, reader.found()));
				}
				head.bases.push_back(spell(parseType(reader)));
			} while (reader.acceptSymbol(","));
		}
		return head;
	}
} // namespace HeaderTool
