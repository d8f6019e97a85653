#include "Kit/ProcessFigures.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <curl/curl.h>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

namespace
{
	struct Command
	{
		std::unique_ptr<Workload> workload;
		CLI::App* app;
	};

	std::vector<Command> addCommands(CLI::App& program)
	{
		std::vector<Command> commands;
		for (const auto make :
			{makeSmallGets, makeIdleRequests, makeEventLatency, makeFollowedEvents, makeFrames, makeIdleProgram, makeDownloads,
				makeManyFiles, makeUploads, makeNodeOverhead, makeNodeMemory, makeWorkerStart, makeFileMd5, makeFileBase64, makeFileSplit})
		{
			std::unique_ptr<Workload> workload = make();
			CLI::App* app = workload->addTo(program);
			app->fallthrough(); // options of the program may stand after the workload
			commands.push_back({std::move(workload), app});
		}
		return commands;
	}

	nlohmann::json runAll(const CLI::App& program, std::vector<Command>& commands)
	{
		nlohmann::json results = nlohmann::json::array();
		const bool isEveryWanted = program.get_subcommands().empty();
		for (Command& command : commands)
		{
			if (isEveryWanted || command.app->parsed())
			{
				for (const Comparison& comparison : command.workload->run())
				{
					comparison.print();
					results.push_back(comparison.toJson());
				}
			}
		}
		return results;
	}

	void write(const std::string& path, const nlohmann::json& results)
	{
		const nlohmann::json machine = {{"processors", std::thread::hardware_concurrency()}, {"libcurl", curl_version()}};
		std::ofstream file(path);
		file << nlohmann::json{{"machine", machine}, {"comparisons", results}}.dump(1, '\t') << '\n';
		if (!file.flush())
		{
			throw std::runtime_error(path + " cannot be written");
		}
	}
} // namespace

int main(int argc, char** argv)
{
	CLI::App program("Measures Corvane beside a peer that does the same work; without a workload it runs them all.", "CorvaneBench");
	std::string jsonFile;
	program.add_option("--json", jsonFile, "Also write every single value to this file");
	std::vector<Command> commands = addCommands(program);
	CLI11_PARSE(program, argc, argv);

	std::signal(SIGPIPE, SIG_IGN); // a peer that hangs up is no reason to end
	std::setvbuf(stdout, nullptr, _IOLBF, 0);
	try
	{
		ProcessFigures::raiseFileLimit();
		curl_global_init(CURL_GLOBAL_DEFAULT);
		const nlohmann::json results = runAll(program, commands);
		if (!jsonFile.empty())
		{
			write(jsonFile, results);
		}
	}
	catch (const std::exception& error)
	{
		fmt::print(stderr, "CorvaneBench: {}\n", error.what());
		return 1;
	}
	return 0;
}
