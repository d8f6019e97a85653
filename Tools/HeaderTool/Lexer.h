#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace HeaderTool
{
	enum class TokenKind
	{
		Identifier, // keywords too
		Number,
		String,
		Character,
		Symbol, // one character, except "::"
		Directive, // a whole preprocessor line
		End // always the last token
	};

	struct Token
	{
		TokenKind kind = TokenKind::End;
		std::string text; // the spelling; of a directive what follows the '#'
		int line = 1; // where the token begins
		int region = 0; // number of directives before it, see takeDirectives
		std::string comment; // what the comment right in front of it says, line by line: one for documentation, or lines of their own
	};

	/**
	 * Cuts the text of a header into tokens. Comments vanish but for those that document
	 * the token after them, continued lines are joined, line ends may be LF or CR LF.
	 * @param text  UTF-8, with or without byte order mark. Throws HeaderError for what cannot be read.
	 */
	std::vector<Token> lex(std::string_view text);
} // namespace HeaderTool
