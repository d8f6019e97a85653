#pragma once

#include "Diagnostics.h"
#include "Lexer.h"

#include <algorithm>

namespace HeaderTool
{
	/** @return whether the token is one of the macros that only this tool gives a meaning, UCLASS to DECLARE_DYNAMIC_... */
	bool isReflectionMacro(const Token& token);

	/** A place in a token list, with the steps that every part of the parser needs. Steps that cannot be made throw HeaderError. */
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
		/** @return whether that symbol or word stands here. */
		bool is(std::string_view text, size_t ahead = 0) const;
		bool isReflection() const { return isReflectionMacro(peek()); }

		/** Passes over the symbol or word, if it stands here. */
		bool accept(std::string_view text);
		void expect(std::string_view text, std::string_view where);
		/** @param what  what the name is of, for the message. */
		std::string expectName(std::string_view what);

		/** Refuses the reflection macro that stands here. */
		[[noreturn]] void failMisplaced() const;

		/**
		 * Passes over one token; over (...), [...] or {...} as a whole, when such brackets begin here. A reflection macro is an
		 * error: it would be lost.
		 */
		void skip();
		/** Passes over a declaration that means nothing to this tool, its body included; stops before a reflection macro. */
		void skipDeclaration();

		/** Throws when a preprocessor line stands between the token at `start` and the one before the current place. */
		void requireNoDirectiveSince(size_t start) const;

		size_t place() const { return position; }
		/** The current token as messages show it. */
		std::string found() const;

	private:
		const std::vector<Token>& tokens;
		size_t position = 0;
	};
} // namespace HeaderTool
