#pragma once

#include <string>
#include <vector>

namespace Program
{
	/** A line of a list of downloads. */
	struct ListedAddress
	{
		std::string address;
		std::string file; // below the folder for downloads; empty = by the address
	};

	/**
	 * Reads a list: an address a line and, behind blanks, the name of its file, which may hold blanks, too. Empty lines, and those
	 * that begin with #, say nothing. Throws InputError, with the number of the line, for what is no address, and for a file that
	 * would lie outside the folder or has a backslash in its name, which stands for a slash there. A byte order mark is skipped.
	 * @param name  of the list, for messages.
	 */
	std::vector<ListedAddress> readAddressList(const std::string& text, const std::string& name);
} // namespace Program
