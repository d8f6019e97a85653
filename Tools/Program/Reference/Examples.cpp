#include "Examples.h"

#include "SharedFiles.h"
#include "Words.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;

		Example load(const fs::path& path)
		{
			std::ostringstream text;
			text << std::ifstream(path, std::ios::binary).rdbuf();
			const std::string line = text.str().substr(0, text.str().find('\n'));
			return {path.string(), path.filename().string(), line.substr(std::min(line.size(), line.find_first_not_of("- "))), text.str()};
		}
	} // namespace

	bool Example::uses(std::string_view member) const
	{
		for (size_t place = text.find(member, 1); place != std::string::npos; place = text.find(member, place + 1))
		{
			const bool isMember = text[place - 1] == '.' || text[place - 1] == ':';
			const size_t end = place + member.size();
			const size_t line = text.rfind('\n', place) + 1; // npos + 1 = 0: the first line
			const bool isInComment = text.substr(line, place - line).find("--") != std::string::npos;
			if (isMember && !isInComment && (end == text.size() || !isWordCharacter(text[end])))
			{
				return true;
			}
		}
		return false;
	}

	std::vector<Example> loadExamples()
	{
		std::vector<Example> examples;
		for (const fs::directory_entry& entry : fs::directory_iterator(sharedFolder("examples")))
		{
			if (entry.path().extension() == ".lua")
			{
				examples.push_back(load(entry.path()));
			}
		}
		std::sort(examples.begin(), examples.end(), [](const Example& a, const Example& b) { return a.file < b.file; });
		return examples;
	}
} // namespace Program
