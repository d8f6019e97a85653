#include "GameLoop.h"
#include "Kit/CorvaneClient.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/RequestFigures.h"
#include "Kit/Self.h"
#include "NginxServer.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fstream>
#include <mimalloc.h>

namespace
{
	constexpr const char* peerName = "builder and event";

	/** An origin of one file, whose connections last for as long as the benchmark. */
	class OneFile
	{
	public:
		explicit OneFile(std::size_t bytes)
			: body(bytes, 'x')
		{
			std::ofstream(origin.filesDirectory() / "file") << body;
		}

		std::string url() const { return origin.url("/file"); }

		const std::string body;

	private:
		const NginxServer origin{{.serverConfig = "keepalive_requests 1000000000; keepalive_timeout 1h;"}};
	};

	class NodeOverhead final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("node-overhead", "The same small GETs by latent nodes, and by builder and event");
			command->add_option("--requests", requests, "Requests of one run")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--in-flight", inFlight, "Requests at a time")->capture_default_str()->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair");
			return command;
		}

		std::vector<Comparison> run() override
		{
			const OneFile file(100);
			FGameLoop loop(unlimitedConnections());
			const auto measure = [&](CorvaneClient::Way way)
			{
				CorvaneClient client(loop, way);
				const StopWatch watch;
				client.fetch(file.url(), requests, inFlight, file.body);
				return requestFiguresOfGame(watch, requests);
			};
			Comparison empty(fmt::format("node-overhead: {} GETs by nodes, {} in flight", requests, inFlight), peerName);
			return {alternate(
				std::move(empty), pairs, WarmUp::OnePair, [&] { return measure(CorvaneClient::Way::Node); },
				[&] { return measure(CorvaneClient::Way::BuilderAndEvent); })};
		}

	private:
		int requests = 20000;
		int inFlight = 64;
		int pairs = 5;
	};

	/** Resident memory after more and more finished requests, and what each of them has left behind. */
	Figures measureMemory(CorvaneClient::Way way, int inFlight)
	{
		constexpr std::size_t bytes = 100 << 10;
		const OneFile file(bytes);
		FGameLoop loop(unlimitedConnections());
		CorvaneClient client(loop, way);
		Figures taken;
		std::int64_t lastResident = 0;
		for (const int goal : {1000, 5000, 10000})
		{
			const int before = client.completed();
			client.fetch(file.url(), goal - before, inFlight, file.body);
			loop.CollectGarbage();
			mi_collect(true); // what the allocator keeps for the next request is no growth
			const std::int64_t resident = ProcessFigures::residentBytes();
			taken.push_back({fmt::format("resident after {}", goal), "MiB", static_cast<double>(resident) / (1 << 20)});
			if (before > 0)
			{
				taken.push_back({fmt::format("growth, {} to {}", before, goal), "bytes/request",
					static_cast<double>(resident - lastResident) / (goal - before)});
			}
			lastResident = resident;
		}
		return taken;
	}

	class NodeMemory final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("node-memory", "Memory that finished latent nodes leave behind");
			command->add_option("--in-flight", inFlight, "Requests at a time")->capture_default_str()->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs, each run in a fresh process");
			command->add_option("--side", side)->group(""); // for the fresh processes alone
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!side.empty())
			{
				const auto way = side == "node" ? CorvaneClient::Way::Node : CorvaneClient::Way::BuilderAndEvent;
				printForParent(measureMemory(way, inFlight));
				return {};
			}
			Comparison empty(fmt::format("node-memory: finished GETs of 100 KiB by nodes, {} in flight", inFlight), peerName);
			return {alternate(
				std::move(empty), pairs, WarmUp::None, [this] { return measureIn("node"); }, [this] { return measureIn("event"); })};
		}

	private:
		Figures measureIn(const char* which) const { return runSelf(fmt::format("node-memory --in-flight {} --side {}", inFlight, which)); }

		int inFlight = 16;
		int pairs = 3;
		std::string side;
	};
} // namespace

std::unique_ptr<Workload> makeNodeOverhead()
{
	return std::make_unique<NodeOverhead>();
}

std::unique_ptr<Workload> makeNodeMemory()
{
	return std::make_unique<NodeMemory>();
}
