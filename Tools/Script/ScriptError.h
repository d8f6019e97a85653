#pragma once

#include <stdexcept>
#include <string>

namespace Script
{
	/** What is wrong with a script's input. It becomes a script error at the border to Lua, the place in the script added there. */
	class ScriptError : public std::runtime_error
	{
	public:
		using std::runtime_error::runtime_error;

		/** The same fault as seen from outside: "element 2: expected ...". */
		ScriptError inside(const std::string& place) const { return ScriptError(place + ": " + what()); }
	};
} // namespace Script
