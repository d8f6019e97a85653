#pragma once

#include <string>

/**
 * Paths as the modules take them: full, with links resolved before "..", and as their texts hold them, where bytes that are no
 * UTF-8 become other letters. All throw InputError for a path that holds a backslash, which the modules take for a slash.
 */
namespace Program
{
	/** @return the path of a file to read, by its own name, even when that is a link: the name is told to servers. */
	std::string sourcePath(const std::string& path);

	/**
	 * @return the path of a file to write: what a link leads to. Two paths that lead to one file give the same text.
	 * Throws InputError also for what is there and can be no target, such as a device, which a file would replace.
	 */
	std::string targetPath(const std::string& path);
} // namespace Program
