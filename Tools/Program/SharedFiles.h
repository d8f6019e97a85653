#pragma once

#include <filesystem>
#include <string>

namespace Program
{
	/**
	 * Finds files that belong to the program and that people may read, too. They lie beside its folder, as in
	 * prefix/bin and prefix/share/corvane, so that a moved prefix works; a build tree is laid out alike.
	 * @param name  "examples", "guides" or "reference".
	 * @return the folder of that name. Throws std::runtime_error when it is not there. Thread: any.
	 */
	std::filesystem::path sharedFolder(const std::string& name);
} // namespace Program
