#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace HeaderTool
{
	/** One complaint about one line of one header. */
	struct Diagnostic
	{
		std::string path; // as given on the command line
		int line = 1; // counted from 1
		std::string message;
	};

	using Diagnostics = std::vector<Diagnostic>;

	/** Ends the reading of a whole header. */
	struct NestingError
	{
		int line;
	};

	/** Ends the reading of one declaration; the parser reports it and goes on with the next one. */
	struct ParseError : std::runtime_error
	{
		ParseError(int inLine, const std::string& message)
			: std::runtime_error(message)
			, line(inLine)
		{
		}
		int line;
	};
} // namespace HeaderTool
