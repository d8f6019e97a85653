#include "WriteReference.h"

#include "Graph/GraphDrawing.h"
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

		template <class Entry>
		void writePages(const fs::path& directory, const Reference& reference, const std::vector<Entry>& entries,
			std::string (*page)(const Reference&, const Entry&))
		{
			for (const Entry& entry : entries)
			{
				write(directory / pageName(entry), page(reference, entry));
			}
		}

		/** As files of their own, too: the guides show them where they are read as they are. */
		void writePictures(const fs::path& directory, const std::vector<Guide>& guides)
		{
			fs::create_directories(directory);
			for (const Guide& guide : guides)
			{
				if (guide.graph)
				{
					write(directory / (guide.name + ".svg"), drawGraph(*guide.graph) + "\n");
				}
			}
		}
	} // namespace

	Reference collectReference()
	{
		const std::vector<NodeFacts> nodes = allFacts();
		return {nodes, loadExamples(), loadGuides(nodes)};
	}

	void writeReference(const Reference& reference, const std::string& directory)
	{
		fs::create_directories(directory);
		for (const char* const shared : {"reference.css", "copy.js", "search.js"})
		{
			fs::copy_file(sharedFolder("reference") / shared, fs::path(directory) / shared, fs::copy_options::overwrite_existing);
		}
		write(fs::path(directory) / "index.html", indexPage(reference));
		if (!reference.enumerations().empty())
		{
			write(fs::path(directory) / valuesPageName, valuesPage(reference));
		}
		writePages(directory, reference, reference.nodes, nodePage);
		writePages(directory, reference, reference.examples, examplePage);
		writePages(directory, reference, reference.guides, guidePage);
		writePictures(fs::path(directory) / "graphs", reference.guides);
	}
} // namespace Program
