#pragma once

#include "Diagnostics.h"

#include <filesystem>

namespace HeaderTool
{
	/** What the command line says. */
	struct Options
	{
		std::string module; // "Corvane"
		std::filesystem::path output; // folder of the generated files; made when missing
		bool engineShape = false; // write what the engine's tool would, to compile only
		std::vector<std::string> headers; // read and generated for, in this order
		std::vector<std::string> references; // read for the checks only
	};

	/**
	 * Reads all headers, checks them and writes X.generated.h and X.gen.cpp for each. A header without reflected types gets files that
	 * hold nothing, so that a build need not look into headers to know what comes out. Files whose text stays the same are
	 * left alone. Nothing is written when there is a mistake in any header.
	 * @return the first mistake of each header; a file that cannot be read or written is one too.
	 */
	Diagnostics run(const Options& options);

	/** "path/File.h(12): Error: message" */
	std::string format(const Diagnostic& diagnostic);
} // namespace HeaderTool
