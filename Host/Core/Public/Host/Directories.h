#pragma once

#include <string>

namespace HostDirectories
{
	/**
	 * Sets the two roots of FPaths.
	 * @param Project  directory of the project, absolute or relative to Base.
	 * @param Base  where relative paths start; empty = the current directory.
	 * @note Thread: game thread, before other threads use paths.
	 */
	void Set(const std::string& Project, const std::string& Base);
} // namespace HostDirectories
