#include "CorvaneDownloadFile.h"
#include "CorvaneTransferQueue.h"
#include "GameLoop.h"
#include "Host/Log.h"
#include "Kit/Command.h"
#include "Kit/CorvaneClient.h"
#include "Kit/GameThreadMeter.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/Self.h"
#include "NginxServer.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <stdexcept>

namespace
{
	namespace fs = std::filesystem;

	struct Peer
	{
		const char* name;
		const char* command; // {0} = a folder with the lists and the folder "target", {1} = how many at once
	};
	const Peer peers[] = {
		{"curl --parallel", "curl -q -sS --no-progress-meter --noproxy '*' --parallel --parallel-max {1} -K '{0}/curl.list'"},
		{"aria2c -x1", "aria2c -q --no-conf --file-allocation=none -j{1} -x1 -d '{0}/target' -i '{0}/aria2.list'"},
	};

	std::string nameOf(int number)
	{
		return fmt::format("{:05}.bin", number);
	}

	/** Files of random bytes and sizes, and the lists that the peers want. It goes with this object. */
	class Files
	{
	public:
		Files(int number, const std::string& parent)
		{
			std::string pattern = ((parent.empty() ? fs::temp_directory_path() : fs::path(parent)) / "corvane-many-XXXXXX").string();
			if (!mkdtemp(pattern.data()))
			{
				throw std::runtime_error(pattern + " cannot be made");
			}
			folder = pattern;
			fs::create_directory(folder / "origin");
			std::mt19937 random(1); // the same files in every run
			std::uniform_int_distribution<std::size_t> sizes(10 << 10, 100 << 10);
			for (int file = 0; file < number; ++file)
			{
				std::string bytes(sizes(random), '\0');
				std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
				std::ofstream(folder / "origin" / nameOf(file), std::ios::binary) << bytes;
			}
		}
		~Files() { fs::remove_all(folder); }
		Files(const Files&) = delete;
		Files& operator=(const Files&) = delete;

		void writeLists(const std::string& url, int number) const
		{
			std::ofstream curl(folder / "curl.list"), aria2(folder / "aria2.list");
			for (int file = 0; file < number; ++file)
			{
				const std::string name = nameOf(file);
				curl << fmt::format("url = \"{}{}\"\noutput = \"{}\"\n", url, name, (folder / "target" / name).string());
				aria2 << url << name << '\n';
			}
		}

		void makeTarget() const
		{
			fs::remove_all(folder / "target");
			fs::create_directory(folder / "target");
			::sync(); // what others have written is not to be waited for in a run
		}

		void checkTarget() const { outputOf(fmt::format("diff -r '{0}/origin' '{0}/target'", folder.string())); }

		fs::path folder;
	};

	/** Downloads all, in this process. */
	Figures measureCorvane(const std::string& url, const std::string& target, int number, int atOnce)
	{
		constexpr double longEnough = 600;
		HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {});
		FGameLoop loop(unlimitedConnections());
		UCorvaneTransferQueue::GetTransferQueue("many")->SetLimits(atOnce, atOnce);
		FCorvaneDownloadOptions options;
		options.Queue = "many";
		int ended = 0;
		int succeeded = 0;
		ProcessFigures::forgetPeak();
		const std::int64_t before = ProcessFigures::residentBytes();
		const StopWatch watch;
		for (int file = 0; file < number; ++file)
		{
			const std::string name = nameOf(file);
			UCorvaneDownloadFile::Start(FString((url + name).c_str()), FString((target + "/" + name).c_str()), options,
				[&](const FCorvaneTransferReport& report)
				{
					++ended;
					succeeded += report.Outcome == ECorvaneTransferOutcome::Succeeded ? 1 : 0;
				});
		}
		const double starts = watch.threadCpuSeconds();
		const double gameThread = starts + tickUntil(
											   loop, [&] { return ended == number; }, longEnough)
											   .all();
		const double seconds = watch.seconds();
		if (succeeded != number)
		{
			throw std::runtime_error(fmt::format("Corvane: {} of {} files are there", succeeded, number));
		}
		return {{"time", "s", seconds}, {"game thread CPU", "us/file", gameThread * 1e6 / number},
			{"CPU", "us/file", watch.cpuSeconds() * 1e6 / number},
			{"peak of memory beyond the idle program", "MiB", ProcessFigures::toMebibytes(ProcessFigures::peakResidentBytes() - before)}};
	}

	class ManyFiles final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("many-files", "Small files to disk through a queue, some at a time");
			command->add_option("--files", number, "How many, of 10 to 100 KiB")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--at-once", atOnce, "How many at a time")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--folder", parent, "Where the files lie; empty = the folder for temporary files");
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair, Corvane's in a fresh process");
			command->add_option("--url", url)->group(""); // for the fresh processes alone, like the next
			command->add_option("--target", target)->group("");
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!url.empty())
			{
				printForParent(measureCorvane(url, target, number, atOnce));
				return {};
			}
			const Files files(number, parent);
			const NginxServer origin({.root = files.folder / "origin", .serverConfig = "keepalive_requests 1000000000;"});
			files.writeLists(origin.url("/"), number);
			std::vector<Comparison> results;
			for (const Peer& peer : peers)
			{
				Comparison empty(fmt::format("many-files: {} files, {} at a time", number, atOnce), peer.name);
				results.push_back(alternate(
					std::move(empty), pairs, WarmUp::OnePair, [&] { return corvaneRun(files, origin.url("/")); },
					[&] { return peerRun(files, peer); }));
			}
			return results;
		}

	private:
		Figures corvaneRun(const Files& files, const std::string& from) const
		{
			files.makeTarget();
			const Figures taken = runSelf(fmt::format(
				"many-files --files {} --at-once {} --url {} --target '{}'", number, atOnce, from, (files.folder / "target").string()));
			files.checkTarget();
			return taken;
		}

		Figures peerRun(const Files& files, const Peer& peer) const
		{
			files.makeTarget();
			const StopWatch watch;
			outputOf(fmt::format(fmt::runtime(peer.command), files.folder.string(), atOnce));
			const double seconds = watch.seconds();
			files.checkTarget();
			return {{"time", "s", seconds}};
		}

		int number = 2000;
		int atOnce = 8;
		int pairs = 5;
		std::string parent;
		std::string url;
		std::string target;
	};
} // namespace

std::unique_ptr<Workload> makeManyFiles()
{
	return std::make_unique<ManyFiles>();
}
