#pragma once

#include "Lexer.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace HeaderTool
{
	/** A place in a token list, with the steps that every part of the parser needs. Steps that cannot be made throw ParseError. */
	class TokenReader
	{
	public:
		/** @param inTokens  outlive the reader; the last one is the End token. */
		explicit TokenReader(const std::vector<Token>& inTokens)
			: tokens(inTokens)
		{
		}

		const Token& peek(size_t ahead = 0) const { return tokens[std::min(position + ahead, tokens.size() - 1)]; }
		const Token& next();
		int line() const { return peek().line; }
		bool atEnd() const { return peek().kind == TokenKind::End; }
		bool isSymbol(std::string_view text, size_t ahead = 0) const;
		bool isWord(std::string_view text, size_t ahead = 0) const;
		bool isReflection() const;

		bool acceptSymbol(std::string_view text);
		bool acceptWord(std::string_view text);
		void expectSymbol(std::string_view text, std::string_view where);
		/** @param what  what the name is of, for the message. */
		std::string expectName(std::string_view what);

		/** Passes over (...), [...] or {...}, whichever begins here. A reflection macro inside is an error: it would be lost. */
		void skipBalanced();
		/** Passes over <...>. */
		void skipAngles();
		/** Passes over a declaration that means nothing to this tool, its body included; stops before a reflection macro. */
		void skipDeclaration();
		/** After an error: passes over the macro at `start`, its arguments and the declaration behind it, whatever they hold. */
		void recover(size_t start);

		/** Throws when a preprocessor line stands between the token at `start` and the one before the current place. */
		void requireNoDirectiveSince(size_t start) const;

		size_t place() const { return position; }
		[[noreturn]] void fail(const std::string& message) const { throw ParseError(line(), message); }
		/** The current token as messages show it. */
		std::string found() const;

	private:
		void skipOperatorName();
		bool bodyEndsDeclaration();

		const std::vector<Token>& tokens;
		size_t position = 0;
		bool isRecovering = false;
	};
} // namespace HeaderTool
