#include "Kit/FileWorkload.h"

#include "Kit/ChildProcess.h"
#include "Kit/Options.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <stdlib.h>

namespace
{
	namespace fs = std::filesystem;

	constexpr std::size_t mebibyte = 1024 * 1024;

	/** A new folder that goes with this object. */
	class TempFolder
	{
	public:
		explicit TempFolder(const fs::path& root)
			: name(root / "corvane-bench-XXXXXX")
		{
			if (!mkdtemp(name.data()))
			{
				throw std::runtime_error("no folder can be made in " + root.string());
			}
		}
		~TempFolder()
		{
			std::error_code ignored;
			fs::remove_all(name, ignored);
		}
		TempFolder(const TempFolder&) = delete;
		TempFolder& operator=(const TempFolder&) = delete;

		fs::path path() const { return name; }

	private:
		std::string name;
	};

	void writeRandomFile(const fs::path& path, int mebibytes)
	{
		std::mt19937_64 random(1);
		std::vector<std::uint64_t> numbers(mebibyte / sizeof(std::uint64_t));
		std::ofstream file(path, std::ios::binary);
		for (int written = 0; written < mebibytes; ++written)
		{
			std::generate(numbers.begin(), numbers.end(), std::ref(random));
			file.write(reinterpret_cast<const char*>(numbers.data()), mebibyte);
		}
		if (!file.flush())
		{
			throw std::runtime_error(path.string() + " cannot be written");
		}
	}

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
	const TempFolder folder(root);
	writeRandomFile(folder.path() / fileName, description.mebibytes);
	return {compare(folder.path())};
}

Comparison FileWorkload::compare(const fs::path& folder) const
{
	const std::string file = folder / fileName;
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
