#pragma once

#include <string>
#include <vector>

namespace Program
{
	/**
	 * What may stand at the end of a command line: verbs, options, functions, the pins that are not set yet, and the values
	 * of enumerations and switches. Names compare without regard to case.
	 * @param line  from the command's name to the cursor, as typed.
	 * @return whole words; one that ends in "=" or "." wants to be gone on with. Empty where any file may stand.
	 */
	std::vector<std::string> completions(const std::string& line);
} // namespace Program
