#include "Kit/FileWorkload.h"

#include "Kit/ChildProcess.h"
#include "Kit/Options.h"
#include "Kit/RandomFile.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

namespace
{
	namespace fs = std::filesystem;

	std::string readFile(const fs::path& path)
	{
		std::ifstream file(path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(file), {});
	}
} // namespace

FileWorkload::FileWorkload(Description inDescription)
	: description(std::move(inDescription))
	, root(fs::temp_directory_path())
{
}

CLI::App* FileWorkload::addTo(CLI::App& program)
{
	CLI::App* command = program.add_subcommand(description.name, description.summary);
	command->add_option("--mebibytes", description.mebibytes, "Size of the file")->capture_default_str()->check(CLI::PositiveNumber);
	command->add_option("--folder", root, "Where the files are made")->capture_default_str()->check(CLI::ExistingDirectory);
	addPairs(*command, pairs, "Pairs of runs after one warm-up pair");
	command->add_option("--work-on", workOn)->group("");
	addOptions(*command);
	return command;
}

std::vector<Comparison> FileWorkload::run()
{
	if (!workOn.empty())
	{
		work(workOn);
		return {};
	}
	return {compare(RandomFile(description.mebibytes, root))};
}

Comparison FileWorkload::compare(const RandomFile& content) const
{
	const std::string file = content.path();
	const fs::path folder = content.folder();
	const auto measure = [&](const std::vector<std::string>& command)
	{
		const fs::path output = folder / "output";
		Figures figures = ChildProcess::run(command, output);
		check(folder, readFile(output));
		return figures;
	};
	std::vector<std::string> ours{fs::read_symlink("/proc/self/exe"), description.name, "--work-on", file};
	const std::vector<std::string> options = corvaneOptions();
	ours.insert(ours.end(), options.begin(), options.end());
	Comparison empty(fmt::format("{}: {} MiB", description.name, description.mebibytes), description.peer);
	return alternate(
		std::move(empty), pairs, WarmUp::OnePair, [&] { return measure(ours); }, [&] { return measure(peerCommand(folder, file)); });
}
