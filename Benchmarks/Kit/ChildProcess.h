#pragma once

#include "Kit/Comparison.h"

#include <string>
#include <vector>

namespace ChildProcess
{
	/**
	 * Runs a program to its end. Throws std::runtime_error when it cannot be started or fails.
	 * @param words  program and arguments; a program without a slash is looked for on the path.
	 * @param outputFile  takes its standard output.
	 * @return wall time, CPU time and the most memory that it had in RAM. The last is never below what this process has.
	 */
	Figures run(const std::vector<std::string>& words, const std::string& outputFile);
} // namespace ChildProcess
