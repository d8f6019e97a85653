#pragma once

#include "Model.h"
#include "TokenReader.h"

/**
 * The smaller pieces of a reflected declaration. Each function begins at the first token of its piece, ends behind the
 * last one, and throws ParseError when it cannot make sense of what is there.
 */
namespace HeaderTool
{
	/** From the opening bracket of a reflection macro to the closing one. */
	Specifiers parseSpecifiers(TokenReader& reader);

	TypeDef parseType(TokenReader& reader);

	/** Everything between the macro and the body of a class or struct. */
	struct TypeHead
	{
		int line = 1;
		std::string name;
		std::vector<std::string> bases;
	};

	/** From the word `class` or `struct` to the brace before the body. */
	TypeHead parseTypeHead(TokenReader& reader, std::string_view keyword, std::string_view macro);

	/** From the opening bracket of a parameter list to the closing one. */
	std::vector<ParameterDef> parseParameters(TokenReader& reader);

	/** From the first token behind UFUNCTION(...) to the semicolon or the end of the body. */
	FunctionDef parseFunction(TokenReader& reader);

	/** From the first token behind UPROPERTY(...) to the semicolon. */
	PropertyDef parseProperty(TokenReader& reader);

	/** From the word `enum` to the semicolon. */
	EnumDef parseEnum(TokenReader& reader);

	/** From the word DECLARE_DYNAMIC_MULTICAST_DELEGATE... to the semicolon, which may be missing. */
	DelegateDef parseDelegate(TokenReader& reader);

	/** Joins the string literals that stand side by side. Only ordinary literals are read, none with a prefix. */
	std::string parseText(TokenReader& reader);
} // namespace HeaderTool
