#include "Kit/RandomFile.h"

#include "Kit/Command.h"

#include <cstdlib>
#include <fmt/format.h>
#include <stdexcept>

RandomFile::RandomFile(int mebibytes, const std::string& folder)
{
	const std::filesystem::path root = folder.empty() ? std::filesystem::temp_directory_path() : std::filesystem::path(folder);
	std::string pattern = (root / "corvane-bench-XXXXXX").string();
	if (!mkdtemp(pattern.data()))
	{
		throw std::runtime_error("cannot make a temporary directory");
	}
	directory = pattern;
	outputOf(fmt::format("head -c {}M /dev/urandom > {}", mebibytes, path()));
}
