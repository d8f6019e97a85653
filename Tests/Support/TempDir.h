#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/** A new empty directory that goes with all its content at the end of the scope. */
class TempDir
{
public:
	TempDir();
	~TempDir();
	TempDir(const TempDir&) = delete;
	TempDir& operator=(const TempDir&) = delete;

	/** @param name  relative to the directory; empty = the directory itself. @return an absolute path. */
	std::string path(std::string_view name = "") const;

	/** Makes or replaces a file; missing directories are made. @return its path. */
	std::string write(std::string_view name, std::string_view bytes) const;
	/** @return the bytes of a file; a missing file fails the test. */
	std::string read(std::string_view name) const;
	bool exists(std::string_view name) const { return std::filesystem::exists(path(name)); }

private:
	std::filesystem::path Root;
};
