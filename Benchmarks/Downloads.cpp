#include "CorvaneDownloadFile.h"
#include "GameLoop.h"
#include "Host/Log.h"
#include "Kit/Command.h"
#include "Kit/CorvaneClient.h"
#include "Kit/GameThreadMeter.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/RandomFile.h"
#include "Kit/Self.h"
#include "NginxServer.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <stdexcept>
#include <unistd.h>

namespace
{
	namespace fs = std::filesystem;

	enum class Way
	{
		Whole,
		Stepped,
		Transfer, // the node of the second module
		TransferWithHash
	};

	/** One way to download, and programs that do the same. {0} = the URL, {1} = the target. */
	struct Kind
	{
		const char* name;
		Way way;
		int files; // at once; their names are the target and a number
		std::vector<std::pair<const char*, const char*>> peers; // name, command
	};

	const char* const curl = "curl -q -sS --noproxy '*' -o {1} {0}";
	const char* const curlParallel =
		"curl -q -sS --no-progress-meter --noproxy '*' --parallel --parallel-immediate --parallel-max 100 -o '{1}#1' '{0}?[0-99]'";

	const Kind kinds[] = {
		{"WHOLE", Way::Whole, 1, {{"curl -o", curl}}},
		{"STEPPED", Way::Stepped, 1,
			{{"curl -o", curl}, {"wget", "wget -q --no-proxy --no-use-server-timestamps -O {1} {0}"},
				{"aria2c -x1", "aria2c -q --no-conf --file-allocation=none -x1 -d / -o {1} {0}"}}},
		{"MANY", Way::Whole, 100, {{"curl --parallel", curlParallel}}},
		{"TRANSFER", Way::Transfer, 1, {{"curl -o", curl}, {"curl -o, sync", "curl -q -sS --noproxy '*' -o {1} {0} && sync {1}"}}},
		{"TRANSFER_HASH", Way::TransferWithHash, 1, {{"curl -o, sha256sum", "curl -q -sS --noproxy '*' -o {1} {0} && sha256sum {1}"}}},
		{"TRANSFER_MANY", Way::Transfer, 100, {{"curl --parallel", curlParallel}}},
	};

	const Kind& kindNamed(const std::string& name)
	{
		for (const Kind& kind : kinds)
		{
			if (name == kind.name)
			{
				return kind;
			}
		}
		throw std::runtime_error("there is no kind of download called " + name);
	}

	std::string targetOf(const Kind& kind, const std::string& path, int number)
	{
		return kind.files == 1 ? path : path + std::to_string(number);
	}

	/** Seconds from a moment until the last byte reached a file. */
	double secondsUntilWritten(const Kind& kind, const std::string& path, fs::file_time_type start)
	{
		fs::file_time_type last = start;
		for (int number = 0; number < kind.files; ++number)
		{
			last = std::max(last, fs::last_write_time(targetOf(kind, path, number)));
		}
		return std::chrono::duration<double>(last - start).count();
	}

	TArray<FhttpRequest> build(const Kind& kind, const std::string& url, const std::string& path)
	{
		constexpr auto overwrite = EHTTPCorvFileDownloadResumeType::E_OVERWRITE;
		constexpr auto absolute = EHTTPCorvFileUpload::E_ad;
		TArray<FhttpRequest> records;
		for (int number = 0; number < kind.files; ++number)
		{
			const FString target(targetOf(kind, path, number).c_str());
			FString id;
			if (kind.way == Way::Stepped)
			{
				UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(
					records, FString(url.c_str()), {}, overwrite, absolute, target, "", records, id);
			}
			else
			{
				UCorvaneBPLibrary::CreateHttpRequestGETDownload(
					records, FString(url.c_str()), {}, overwrite, absolute, target, "", records, id);
			}
		}
		return records;
	}

	bool isTransfer(const Kind& kind)
	{
		return kind.way == Way::Transfer || kind.way == Way::TransferWithHash;
	}

	/** What has come of the downloads of one run. */
	struct Ends
	{
		int completed = 0;
		bool isGood = true;

		void add(bool isThisGood)
		{
			++completed;
			isGood = isGood && isThisGood;
		}
	};

	/** @return the last of them. */
	const UCorvaneTransfer* startTransfers(const Kind& kind, const std::string& url, const std::string& path, Ends& ends)
	{
		const UCorvaneTransfer* last = nullptr;
		FCorvaneDownloadOptions options;
		options.Hash = kind.way == Way::TransferWithHash ? "sha256" : "";
		for (int number = 0; number < kind.files; ++number)
		{
			last = UCorvaneDownloadFile::Start(FString(url.c_str()), FString(targetOf(kind, path, number).c_str()), options,
				[&ends](const FCorvaneTransferReport& report) { ends.add(report.Outcome == ECorvaneTransferOutcome::Succeeded); });
		}
		return last;
	}

	constexpr double longEnough = 600;

	/** Of a game thread that has nothing else to do: until all have ended. @param starts  CPU seconds that starting them took. */
	Figures gameThreadTimes(FGameLoop& loop, const Kind& kind, const std::string& path, double starts, const Ends& ends)
	{
		const double seconds = starts + tickUntil(
											loop, [&] { return ends.completed == kind.files; }, longEnough)
											.all();
		constexpr double stepBytes = 10485761;
		const bool isStepped = kind.way == Way::Stepped;
		const double steps = isStepped ? std::ceil(static_cast<double>(fs::file_size(path)) / stepBytes) : kind.files;
		return {{"game thread CPU", isStepped ? "ms/step" : "ms/file", seconds * 1e3 / steps}};
	}

	/** The same of a single transfer: what it costs while bytes move, and what it costs whatever its size. */
	Figures gameThreadTimes(FGameLoop& loop, const UCorvaneTransfer& transfer, double starts, const Ends& ends)
	{
		const auto isOver = [&] { return ends.completed > 0; };
		const auto hasBytes = [&] { return isOver() || transfer.GetReport().TransferredBytes > 0; };
		const auto hasAll = [&] { return isOver() || transfer.GetReport().TransferredBytes == transfer.GetReport().TotalBytes; };
		const double before = starts + tickUntil(loop, hasBytes, longEnough).all();
		const StopWatch moving;
		const TickTimes meanwhile = tickUntil(loop, hasAll, longEnough); // the last one is told the end
		const double perSecond = meanwhile.before / moving.seconds();
		const double behind = meanwhile.last + tickUntil(loop, isOver, longEnough).all();
		return {{"game thread CPU while bytes move", "ms/s", perSecond * 1e3},
			{"game thread CPU for start and end", "ms", (before + behind) * 1e3}};
	}

	/** Downloads once, in this process. */
	Figures measureCorvane(const Kind& kind, const std::string& url, const std::string& path)
	{
		HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {}); // large bodies are not made text, and say so
		FGameLoop loop;
		UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
		Ends ends;
		const BoundHandler onComplete(library->onhttpRequestCompleteDelegate,
			[&](void* const* arguments) { ends.add(*static_cast<const int32*>(arguments[3]) < 300); });
		ProcessFigures::forgetPeak();
		const std::int64_t before = ProcessFigures::residentBytes();

		const fs::file_time_type start = fs::file_time_type::clock::now();
		const StopWatch watch;
		const double startBegan = ProcessFigures::threadCpuSeconds();
		const UCorvaneTransfer* transfer = nullptr;
		if (isTransfer(kind))
		{
			transfer = startTransfers(kind, url, path, ends);
		}
		else
		{
			UCorvaneBPLibrary::executeHttpRequests(build(kind, url, path), library);
		}
		const double starts = ProcessFigures::threadCpuSeconds() - startBegan;
		const Figures gameThread =
			transfer && kind.files == 1 ? gameThreadTimes(loop, *transfer, starts, ends) : gameThreadTimes(loop, kind, path, starts, ends);
		const double ended = watch.seconds();
		if (!ends.isGood)
		{
			throw std::runtime_error("Corvane: a download failed");
		}
		Figures taken = {{"time until written", "s", secondsUntilWritten(kind, path, start)}, {"time until the event", "s", ended},
			{"peak of memory beyond the idle program", "MiB", ProcessFigures::toMebibytes(ProcessFigures::peakResidentBytes() - before)}};
		taken.insert(taken.end(), gameThread.begin(), gameThread.end());
		return taken;
	}

	class Downloads final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("downloads", "Files to disk: as one body, in steps, many at once");
			command->add_option("--kind", wanted, "Only these kinds: WHOLE, STEPPED, MANY, TRANSFER, TRANSFER_HASH, TRANSFER_MANY");
			command->add_option("--whole-mebibytes", wholeMebibytes, "Size for WHOLE")->capture_default_str();
			command->add_option("--stepped-mebibytes", steppedMebibytes, "Size for STEPPED, TRANSFER and TRANSFER_HASH")
				->capture_default_str();
			command->add_option("--folder", folder, "Where the files lie; empty = the folder for temporary files");
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair, Corvane's in a fresh process");
			command->add_option("--url", url)->group(""); // for the fresh processes alone, like the next
			command->add_option("--target", target)->group("");
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!url.empty())
			{
				printForParent(measureCorvane(kindNamed(wanted.at(0)), url, target));
				return {};
			}
			std::vector<Comparison> results;
			for (const Kind& kind : kinds)
			{
				if (wanted.empty() || std::find(wanted.begin(), wanted.end(), kind.name) != wanted.end())
				{
					compare(kind, kind.files > 1 ? 1 : kind.way == Way::Whole ? wholeMebibytes : steppedMebibytes, results);
				}
			}
			return results;
		}

	private:
		void compare(const Kind& kind, int mebibytes, std::vector<Comparison>& results) const
		{
			const RandomFile content(mebibytes, folder);
			const NginxServer origin({.root = content.folder()});
			const std::string from = origin.url(std::string("/") + RandomFile::name);
			const std::string to = content.folder() + "/target";
			for (const auto& [peer, command] : kind.peers)
			{
				const std::string words = fmt::format(fmt::runtime(command), from, to);
				Comparison empty(fmt::format("downloads: {}, {} x {} MiB", kind.name, kind.files, mebibytes), peer);
				results.push_back(alternate(
					std::move(empty), pairs, WarmUp::OnePair, [&] { return corvaneRun(kind, from, to, content.path()); },
					[&] { return peerRun(kind, words, to, content.path()); }));
			}
		}

		static Figures corvaneRun(const Kind& kind, const std::string& from, const std::string& to, const std::string& original)
		{
			::sync(); // what others have written is not to be waited for in here
			const Figures taken = runSelf(fmt::format("downloads --kind {} --url {} --target {}", kind.name, from, to));
			check(kind, to, original);
			return taken;
		}

		static Figures peerRun(const Kind& kind, const std::string& words, const std::string& to, const std::string& original)
		{
			::sync();
			const fs::file_time_type start = fs::file_time_type::clock::now();
			const StopWatch watch;
			outputOf(words);
			const double seconds = watch.seconds();
			const double written = secondsUntilWritten(kind, to, start);
			check(kind, to, original);
			return {{"time until written", "s", written}, {"time until the event", "s", seconds}};
		}

		/** Compares every file with the original and deletes it. */
		static void check(const Kind& kind, const std::string& to, const std::string& original)
		{
			for (int number = 0; number < kind.files; ++number)
			{
				const std::string path = targetOf(kind, to, number);
				outputOf(fmt::format("cmp {} {}", path, original));
				fs::remove(path);
			}
		}

		int wholeMebibytes = 256;
		int steppedMebibytes = 1024;
		int pairs = 5;
		std::string folder;
		std::vector<std::string> wanted;
		std::string url;
		std::string target;
	};
} // namespace

std::unique_ptr<Workload> makeDownloads()
{
	return std::make_unique<Downloads>();
}
