#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Program
{
	/** A script that people read first. */
	struct Example
	{
		std::string path;
		std::string file; // the path's last part
		std::string title; // its first line, a comment that says what it shows
		std::string text;

		/** @return whether its code, not a comment, names a member that is called so. */
		bool uses(std::string_view member) const;
	};

	/** The scripts in the folder of examples, by file name. */
	std::vector<Example> loadExamples();
} // namespace Program
