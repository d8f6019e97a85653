#include "Commands.h"
#include "DemoOrigin.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace Program
{
	namespace
	{
		namespace fs = std::filesystem;

		std::vector<fs::path> examples()
		{
			std::vector<fs::path> scripts;
			for (const fs::directory_entry& entry : fs::directory_iterator(CORVANE_EXAMPLES_DIRECTORY))
			{
				if (entry.path().extension() == ".lua")
				{
					scripts.push_back(entry.path());
				}
			}
			std::sort(scripts.begin(), scripts.end());
			return scripts;
		}

		/** An example's first line is a comment that says what it shows. */
		std::string titleOf(const fs::path& script)
		{
			std::string line;
			std::ifstream stream(script);
			std::getline(stream, line);
			return line.substr(std::min(line.size(), line.find_first_not_of("- ")));
		}
	} // namespace

	int runDemo()
	{
		DemoOrigin origin;
		FGameLoop loop;
		int worst = exitGood;
		for (const fs::path& script : examples())
		{
			fmt::print("== {}: {}\n", script.filename().string(), titleOf(script));
			worst = std::max(worst, runToEnd(loop, script.string(), {origin.url()}));
			fmt::print("\n");
		}
		loop.Shutdown(); // before the origin ends, which waits for open connections
		fmt::print("{}\n", worst == exitGood ? "All examples ran." : "An example failed.");
		return worst;
	}
} // namespace Program
