#pragma once

#include <filesystem>
#include <string>

/** A file of random bytes in a folder of its own, which goes with this object. */
class RandomFile
{
public:
	/** @param folder  where the folder is made; empty = that for temporary files. */
	explicit RandomFile(int mebibytes, const std::string& folder = "");
	~RandomFile() { std::filesystem::remove_all(directory); }
	RandomFile(const RandomFile&) = delete;
	RandomFile& operator=(const RandomFile&) = delete;

	std::string path() const { return directory / name; }
	std::string folder() const { return directory; }

	static constexpr const char* name = "file.bin";

private:
	std::filesystem::path directory;
};
