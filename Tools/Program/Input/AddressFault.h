#pragma once

#include <string>

namespace Program
{
	/** @return what is wrong with a text that shall be an address; empty = nothing. Pure. */
	std::string addressFault(const std::string& address);
} // namespace Program
