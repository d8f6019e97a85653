#include "Commands.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

namespace
{
	struct CommandLine
	{
		FGameLoopSettings settings;
		Program::CallOptions call;

		CLI::App app{"HTTP requests, downloads and file functions for scripts"};
		CLI::App* run = app.add_subcommand("run", "Runs a Lua script: corvane run [--project DIR] [--base DIR] SCRIPT [ARG...]");
		CLI::App* callFunction = app.add_subcommand("call", "Calls one function or node and prints its pins");
		CLI::App* nodes = app.add_subcommand("nodes", "Lists every script function with its pins");
		CLI::App* demo = app.add_subcommand("demo", "Runs the examples against a server of its own");

		CommandLine()
		{
			app.name("corvane");
			app.require_subcommand(1);
			addDirectories(*run);
			run->prefix_command(); // everything from SCRIPT on belongs to the script, options too
			addDirectories(*callFunction);
			callFunction->add_flag("--json", call.json, "Print one JSON object");
			callFunction->add_option("FUNCTION", call.function, "Class.function, or the function's name alone")->required();
			callFunction->add_option("PIN=VALUE", call.pins, "Enumerations by name, lists and maps as JSON");
		}

		void addDirectories(CLI::App& verb)
		{
			verb.add_option("--project", settings.projectDirectory, "The project's directory")->check(CLI::ExistingDirectory);
			verb.add_option("--base", settings.baseDirectory, "Where relative paths start")->check(CLI::ExistingDirectory);
		}
	};

	int runScript(const CommandLine& line)
	{
		std::vector<std::string> arguments = line.run->remaining();
		if (arguments.empty() || arguments.front().starts_with('-'))
		{
			throw Program::UsageError(arguments.empty() ? "run needs a script" : "unknown option " + arguments.front());
		}
		const std::string script = arguments.front();
		arguments.erase(arguments.begin());
		return Program::runScript(line.settings, script, arguments);
	}

	int carryOut(const CommandLine& line)
	{
		if (*line.run)
		{
			return runScript(line);
		}
		if (*line.callFunction)
		{
			return Program::callFunction(line.settings, line.call);
		}
		return *line.nodes ? Program::listNodes() : Program::runDemo();
	}
} // namespace

int main(int argc, char** argv)
{
	CommandLine line;
	try
	{
		line.app.parse(argc, argv);
		return carryOut(line);
	}
	catch (const CLI::ParseError& error)
	{
		return line.app.exit(error) == 0 ? Program::exitGood : Program::exitUsage; // asking for help is no error
	}
	catch (const Program::UsageError& error)
	{
		fmt::print(stderr, "corvane: {}\n", error.what());
		return Program::exitUsage;
	}
	catch (const std::exception& error)
	{
		fmt::print(stderr, "corvane: {}\n", error.what());
		return Program::exitFailed;
	}
}
