#include "TokenReader.h"

#include "Directives.h"

#include <fmt/format.h>

namespace HeaderTool
{
	const Token& TokenReader::next()
	{
		const Token& token = peek();
		if (!atEnd())
		{
			++position;
		}
		return token;
	}

	bool TokenReader::isSymbol(std::string_view text, size_t ahead) const
	{
		return peek(ahead).kind == TokenKind::Symbol && peek(ahead).text == text;
	}

	bool TokenReader::isWord(std::string_view text, size_t ahead) const
	{
		return peek(ahead).kind == TokenKind::Identifier && peek(ahead).text == text;
	}

	bool TokenReader::isReflection() const
	{
		return peek().kind == TokenKind::Identifier && isReflectionMacro(peek().text);
	}

	bool TokenReader::acceptSymbol(std::string_view text)
	{
		const bool there = isSymbol(text);
		if (there)
		{
			next();
		}
		return there;
	}

	bool TokenReader::acceptWord(std::string_view text)
	{
		const bool there = isWord(text);
		if (there)
		{
			next();
		}
		return there;
	}

	void TokenReader::expectSymbol(std::string_view text, std::string_view where)
	{
		if (!acceptSymbol(text))
		{
			fail(fmt::format("expected '{}' {}, found {}", text, where, found()));
		}
	}

	std::string TokenReader::expectName(std::string_view what)
	{
		if (peek().kind != TokenKind::Identifier || isReflection())
		{
			fail(fmt::format("expected the name of {}, found {}", what, found()));
		}
		return next().text;
	}

	std::string TokenReader::found() const
	{
		switch (peek().kind)
		{
		case TokenKind::End:
			return "the end of the file";
		case TokenKind::String:
			return "a string";
		default:
			return fmt::format("'{}'", peek().text);
		}
	}

	void TokenReader::skipBalanced()
	{
		const int begin = line();
		std::string expected;
		do
		{
			if (atEnd())
			{
				throw ParseError(begin, "this bracket is not closed");
			}
			if (isReflection() && !isRecovering)
			{
				fail(fmt::format("{} stands where it is not read", peek().text));
			}
			const Token& token = next();
			if (token.kind != TokenKind::Symbol)
			{
				continue;
			}
			const std::string& symbol = token.text;
			if (symbol == "(" || symbol == "[" || symbol == "{")
			{
				expected += symbol == "(" ? ')' : symbol == "[" ? ']' : '}';
			}
			else if (symbol == ")" || symbol == "]" || symbol == "}")
			{
				if (symbol[0] != expected.back())
				{
					throw ParseError(token.line, fmt::format("expected '{}', found '{}'", expected.back(), symbol));
				}
				expected.pop_back();
			}
		} while (!expected.empty());
	}

	void TokenReader::skipAngles()
	{
		expectSymbol("<", "here");
		for (int depth = 1; depth > 0;)
		{
			if (isSymbol("(") || isSymbol("[") || isSymbol("{"))
			{
				skipBalanced();
				continue;
			}
			if (atEnd() || isSymbol(";"))
			{
				fail("expected '>' before " + found());
			}
			depth += isSymbol("<") - isSymbol(">");
			next();
		}
	}

	void TokenReader::skipOperatorName()
	{
		next();
		if (isSymbol("(") && isSymbol(")", 1))
		{
			next();
			next();
		}
		while (!atEnd() && !isSymbol("(") && !isSymbol(";"))
		{
			next(); // "==", "[]", "bool"
		}
	}

	/** Behind a closing brace: the body of a function ends its declaration, a braced initialiser goes on to a comma or a semicolon. */
	bool TokenReader::bodyEndsDeclaration()
	{
		return acceptSymbol(";") || (!isSymbol(",") && !isSymbol("{") && !isSymbol("("));
	}

	void TokenReader::skipDeclaration()
	{
		while (!atEnd() && !isReflection() && !isSymbol("}"))
		{
			if (isWord("operator"))
			{
				skipOperatorName();
			}
			else if (isSymbol("(") || isSymbol("["))
			{
				skipBalanced();
			}
			else if (isSymbol("{"))
			{
				skipBalanced();
				if (bodyEndsDeclaration())
				{
					return;
				}
			}
			else if (acceptSymbol(";"))
			{
				return;
			}
			else
			{
				next();
			}
		}
	}

	void TokenReader::recover(size_t start)
	{
		position = start;
		isRecovering = true;
		try
		{
			next();
			if (isSymbol("("))
			{
				skipBalanced();
			}
			skipDeclaration();
		}
		catch (const ParseError&)
		{
			position = tokens.size() - 1; // brackets that do not match: nothing behind them can be trusted
		}
		isRecovering = false;
	}

	void TokenReader::requireNoDirectiveSince(size_t start) const
	{
		for (size_t i = start + 1; i < position; ++i)
		{
			if (tokens[i].region != tokens[start].region)
			{
				throw ParseError(tokens[i].line, "a preprocessor line stands inside this reflected declaration");
			}
		}
	}
} // namespace HeaderTool
