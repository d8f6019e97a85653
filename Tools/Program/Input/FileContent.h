#pragma once

#include <string>

namespace Program
{
	/** @param path  "-" = standard input. Throws InputError when it cannot be read. */
	std::string contentOf(const std::string& path);

	/**
	 * @return a text as it is meant: "@path" stands for the content of a file, "@@" for an at sign. Throws InputError also for
	 * a file that is no UTF-8.
	 */
	std::string textMeantBy(const std::string& word);
} // namespace Program
