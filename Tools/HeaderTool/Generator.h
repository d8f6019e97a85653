#pragma once

#include "Symbols.h"

namespace HeaderTool
{
	/** "Corvane_Sample": what tells the names in the generated files of one header from those of all others. */
	std::string generatedName(const HeaderDef& header, const std::string& module);

	/** The text of X.generated.h. It depends on the header alone. Only headers that pass the checks may be given. */
	std::string generateHeader(const HeaderDef& header, const std::string& module);

	/**
	 * The text of X.gen.cpp: tables, thunks and registration.
	 * @param symbols  all headers of the run, since tables name types of other headers.
	 */
	std::string generateSource(const HeaderDef& header, const Symbols& symbols, const std::string& module);

	/**
	 * The text of X.generated.h as the engine's tool shapes it: with the members that it puts into a class and the wrappers of the
	 * delegates. Such files show that a module bears them; they compile, but nothing can be linked with them.
	 */
	std::string generateEngineHeader(const HeaderDef& header, const std::string& module);
	/** The text of X.gen.cpp that goes with it. */
	std::string generateEngineSource(const HeaderDef& header, const std::string& module);
} // namespace HeaderTool
