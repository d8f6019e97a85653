#pragma once

#include "Model.h"
#include "TokenReader.h"

namespace HeaderTool
{
	/**
	 * Makes the model of one header from its text: reads the reflected declarations and passes over all others. No macro
	 * and no typedef is expanded. Throws HeaderError at the first place that cannot be read.
	 */
	HeaderDef readHeader(std::string_view text, const std::string& path, bool isReference);

	// Its pieces. Each function that takes a reader begins at the first token of its piece, ends after the last one, and
	// throws HeaderError when it cannot make sense of what is there.

	/**
	 * Takes the preprocessor lines out of a token list. Conditions are not evaluated: everything between #if and #endif is
	 * left out too, since nothing reflected may stand there. Under the two editor conditions something reflected may stand, but
	 * it is left out as well: no program outside the editor has it.
	 * @param header  receives the includes and whether `#pragma once` comes first.
	 * @return the other tokens; `region` tells those apart that a directive separates.
	 */
	std::vector<Token> takeDirectives(std::vector<Token> tokens, HeaderDef& header);

	/** From the opening bracket of a reflection macro to the closing one. */
	Specifiers parseSpecifiers(TokenReader& reader);

	TypeDef parseType(TokenReader& reader);

	/** From the word `class` or `struct` to the brace before the body. */
	ClassDef parseTypeHead(TokenReader& reader, std::string_view keyword);

	/** From the opening bracket of a parameter list to the closing one. */
	std::vector<ParameterDef> parseParameters(TokenReader& reader);

	/** From the first token after UFUNCTION(...) to the semicolon or the end of the body. */
	FunctionDef parseFunction(TokenReader& reader);

	/** From the first token after UPROPERTY(...) to the semicolon. */
	PropertyDef parseProperty(TokenReader& reader);

	/** From the word `enum` to the semicolon. */
	EnumDef parseEnum(TokenReader& reader);

	/** From the word DECLARE_DYNAMIC_MULTICAST_DELEGATE... to the semicolon, which may be missing. */
	DelegateDef parseDelegate(TokenReader& reader);

	/** Joins the string literals that stand side by side. */
	std::string parseText(TokenReader& reader);
} // namespace HeaderTool
