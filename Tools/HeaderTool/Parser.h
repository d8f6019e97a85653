#pragma once

#include "Lexer.h"
#include "Model.h"

namespace HeaderTool
{
	/**
	 * Reads the reflected declarations of one header and passes over all others. No macro and no typedef is expanded.
	 * @param tokens       without directives, see takeDirectives.
	 * @param header       receives the declarations; its path is used in messages.
	 * @param diagnostics  receives one entry for each declaration that cannot be read; the others are still read.
	 */
	void parse(const std::vector<Token>& tokens, HeaderDef& header, Diagnostics& diagnostics);

	/** Makes the model of one header from its text: lexer, directives and parser in a row. */
	HeaderDef readHeader(std::string_view text, const std::string& path, bool isReference, Diagnostics& diagnostics);
} // namespace HeaderTool
