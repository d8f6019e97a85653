#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Program
{
	/** Throws InputError when the first word of a command line is neither a verb nor an option. @param word  empty = there is none. */
	void checkVerb(const CLI::App& app, const std::string& word);

	/** @return what is wrong with a command line, and what may have been meant. @param error  of the parser. */
	std::string explain(const CLI::App& app, const CLI::ParseError& error);
} // namespace Program
