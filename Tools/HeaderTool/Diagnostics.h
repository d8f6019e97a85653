#pragma once

#include <fmt/format.h>
#include <stdexcept>
#include <string>
#include <utility>
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

	/** Ends the work on one header: what follows its first mistake is not looked at. */
	struct HeaderError : std::runtime_error
	{
		HeaderError(int inLine, const std::string& message)
			: std::runtime_error(message)
			, line(inLine)
		{
		}
		int line;
	};

	template <class... Arguments>
	[[noreturn]] void fail(int line, fmt::format_string<Arguments...> text, Arguments&&... arguments)
	{
		throw HeaderError(line, fmt::format(text, std::forward<Arguments>(arguments)...));
	}
} // namespace HeaderTool
