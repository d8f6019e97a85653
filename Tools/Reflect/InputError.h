#pragma once

#include <stdexcept>
#include <string>

namespace Reflect
{
	/** What is wrong with what somebody wrote: a name that is not there, a value that a pin cannot hold. */
	class InputError : public std::runtime_error
	{
	public:
		using std::runtime_error::runtime_error;

		/** The same fault as seen from outside: "element 2: expected ...". */
		InputError inside(const std::string& place) const { return InputError(place + ": " + what()); }
	};
} // namespace Reflect
