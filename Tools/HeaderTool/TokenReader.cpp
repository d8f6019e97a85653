#include "TokenReader.h"

#include <array>

namespace HeaderTool
{
	bool isReflectionMacro(const Token& token)
	{
		constexpr std::array<std::string_view, 9> names = {
			"UCLASS", "USTRUCT", "UENUM", "UFUNCTION", "UPROPERTY", "UPARAM", "UMETA", "UINTERFACE", "UDELEGATE"};
		const std::string_view word = token.text;
		return token.kind == TokenKind::Identifier &&
			   (word.starts_with("DECLARE_DYNAMIC_") || (word.starts_with("GENERATED_") && word.ends_with("BODY")) ||
				   std::find(names.begin(), names.end(), word) != names.end());
	}

	const Token& TokenReader::next()
	{
		const Token& token = peek();
		if (!atEnd())
		{
			++position;
		}
		return token;
	}

	bool TokenReader::is(std::string_view text, size_t ahead) const
	{
		const Token& token = peek(ahead);
		return (token.kind == TokenKind::Symbol || token.kind == TokenKind::Identifier) && token.text == text;
	}

	bool TokenReader::accept(std::string_view text)
	{
		const bool there = is(text);
		if (there)
		{
			next();
		}
		return there;
	}

	void TokenReader::expect(std::string_view text, std::string_view where)
	{
		if (!accept(text))
		{
			fail(line(), "expected '{}' {}, found {}", text, where, found());
		}
	}

	std::string TokenReader::expectName(std::string_view what)
	{
		if (peek().kind != TokenKind::Identifier || isReflection())
		{
			fail(line(), "expected the name of {}, found {}", what, found());
		}
		return next().text;
	}

	std::string TokenReader::found() const
	{
		return atEnd() ? "the end of the file" : fmt::format("'{}'", peek().text);
	}

	void TokenReader::failMisplaced() const
	{
		fail(line(),
			"{} is not read here: reflected types belong to the file itself, properties to their bodies, functions to those of classes",
			peek().text);
	}

	void TokenReader::skip()
	{
		const int begin = line();
		std::string expected;
		do
		{
			if (atEnd())
			{
				fail(begin, "this bracket is not closed");
			}
			if (isReflection())
			{
				failMisplaced();
			}
			if (!expected.empty() && (is(")") || is("]") || is("}")))
			{
				expect(std::string_view(expected).substr(expected.size() - 1), "to close a bracket");
				expected.pop_back();
				continue;
			}
			if (is("(") || is("[") || is("{"))
			{
				expected += is("(") ? ')' : is("[") ? ']' : '}';
			}
			next();
		} while (!expected.empty());
	}

	void TokenReader::skipDeclaration()
	{
		while (!atEnd() && !isReflection() && !is("}") && !accept(";"))
		{
			const bool isBody = is("{");
			skip();
			// The body of a function ends its declaration, a braced initialiser goes on to a comma or a semicolon.
			if (isBody && (accept(";") || (!is(",") && !is("{") && !is("("))))
			{
				return;
			}
		}
	}

	void TokenReader::requireNoDirectiveSince(size_t start) const
	{
		for (size_t i = start + 1; i < position; ++i)
		{
			if (tokens[i].region != tokens[start].region)
			{
				fail(tokens[i].line, "a preprocessor line stands inside this reflected declaration");
			}
		}
	}
} // namespace HeaderTool
