#include "Guides.h"

#include "SharedFiles.h"

#include "Graph/GraphFile.h"
#include "Words.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;

		std::string read(const fs::path& path)
		{
			std::ostringstream text;
			text << std::ifstream(path, std::ios::binary).rdbuf();
			return text.str();
		}

		std::optional<Graph> loadGraph(const fs::path& path, const std::string& title, const std::vector<NodeFacts>& nodes)
		{
			if (!fs::exists(path))
			{
				return std::nullopt;
			}
			try
			{
				return readGraph(title, read(path), nodes);
			}
			catch (const std::runtime_error& fault)
			{
				throw std::runtime_error(fmt::format("{}: {}", path.string(), fault.what()));
			}
		}

		/** @return the cell after a guide in the list of guides. */
		std::string purposeOf(const fs::path& path, const std::string& list)
		{
			const std::string mark = fmt::format("({}) | ", path.filename().string());
			const size_t begin = list.find(mark) + mark.size();
			return list.find(mark) == std::string::npos ? "" : list.substr(begin, list.find(" |", begin) - begin);
		}

		Guide load(const fs::path& path, const std::string& list, const std::vector<NodeFacts>& nodes)
		{
			const std::string text = read(path);
			const std::string line = text.substr(0, text.find('\n'));
			const std::string title = line.substr(std::min(line.size(), line.find_first_not_of("# ")));
			const fs::path graph = path.parent_path() / "graphs" / path.filename().replace_extension(".graph");
			return {path.stem().string(), title, purposeOf(path, list), text, loadGraph(graph, title, nodes)};
		}
	} // namespace

	bool Guide::names(std::string_view member) const
	{
		return hasWord(text, member);
	}

	std::vector<Guide> loadGuides(const std::vector<NodeFacts>& nodes)
	{
		const fs::path folder = sharedFolder("guides");
		const std::string list = read(folder / "README.md");
		std::vector<std::pair<size_t, fs::path>> found; // with the place in the list
		for (const fs::directory_entry& entry : fs::directory_iterator(folder))
		{
			const fs::path& path = entry.path();
			if (path.extension() == ".md" && path.filename() != "README.md")
			{
				found.emplace_back(list.find(fmt::format("({})", path.filename().string())), path);
			}
		}
		std::sort(found.begin(), found.end());
		std::vector<Guide> guides;
		for (const auto& [place, path] : found)
		{
			guides.push_back(load(path, list, nodes));
		}
		return guides;
	}
} // namespace Program
