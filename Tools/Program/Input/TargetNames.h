#pragma once

#include <string>

namespace Program
{
	/**
	 * @return the name that a file has in its address: the last part of the path, decoded, with nothing that could lead out of
	 * the folder it is put into; "index.html" when there is none. Pure.
	 */
	std::string fileNameOf(const std::string& address);
} // namespace Program
