#pragma once

#include "Lexer.h"
#include "Model.h"

namespace HeaderTool
{
	/** @return whether the word is one of the macros that only this tool gives a meaning, UCLASS to DECLARE_DYNAMIC_... */
	bool isReflectionMacro(std::string_view word);

	/**
	 * Takes the preprocessor lines out of a token list. Conditions are not evaluated: everything between #if and #endif is
	 * left out too, since nothing reflected may stand there. Under the two editor conditions something reflected may stand, but
	 * it is left out as well: no program outside the editor has it.
	 * @param header  receives the includes and whether `#pragma once` comes first.
	 * @return the other tokens; `region` tells those apart that a directive separates.
	 */
	std::vector<Token> takeDirectives(std::vector<Token> tokens, HeaderDef& header, Diagnostics& diagnostics);
} // namespace HeaderTool
