#include "WriteReference.h"

#include "SharedFiles.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <stdexcept>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;

		void write(const fs::path& path, const std::string& text)
		{
			std::ofstream file(path, std::ios::binary | std::ios::trunc);
			file << text << std::flush;
			if (!file)
			{
				throw std::runtime_error(fmt::format("cannot write '{}': {}", path.string(), std::strerror(errno)));
			}
		}
	} // namespace

	Reference collectReference()
	{
		return {allFacts(), loadExamples()};
	}

	void writeReference(const Reference& reference, const std::string& directory)
	{
		fs::create_directories(directory);
		for (const char* const shared : {"reference.css", "reference.js"})
		{
			fs::copy_file(sharedFolder("reference") / shared, fs::path(directory) / shared, fs::copy_options::overwrite_existing);
		}
		write(fs::path(directory) / "index.html", indexPage(reference));
		for (const NodeFacts& facts : reference.nodes)
		{
			write(fs::path(directory) / pageName(facts), nodePage(reference, facts));
		}
	}
} // namespace Program
