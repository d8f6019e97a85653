#pragma once

#include <string>

namespace Program
{
	/**
	 * @return the name that a file has in its address: the last part of the path, decoded, with nothing that could lead out of
	 * the folder it is put into; "index.html" when there is none. Pure.
	 */
	std::string fileNameOf(const std::string& address);

	/**
	 * @param address  one that ends in '/', query and fragment left aside, is a folder: the file's name goes behind it.
	 * @return where a file is sent to. Pure.
	 */
	std::string addressFor(const std::string& address, const std::string& file);
	/** @return whether the path of an address ends in '/'. */
	bool isFolder(const std::string& address);
} // namespace Program
