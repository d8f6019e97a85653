#include "GameLoop.h"
#include "Kit/BareCurl.h"
#include "Kit/CorvaneClient.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/RequestFigures.h"
#include "NginxServer.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fstream>

namespace
{
	class SmallGets final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("small-gets", "Many small GETs: how many a second, and at what cost");
			command->add_option("--requests", requests, "Requests of one run")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--in-flight", inFlight, "Requests at a time; each value is measured")->capture_default_str();
			command->add_option("--bytes", bytes, "Bytes of each answer")->capture_default_str()->check(CLI::NonNegativeNumber);
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair");
			return command;
		}

		std::vector<Comparison> run() override
		{
			// Connections are kept for as long as both sides want to use them.
			const NginxServer origin({.serverConfig = "keepalive_requests 1000000000; keepalive_timeout 1h;"});
			const std::string body(bytes, 'x');
			std::ofstream(origin.filesDirectory() / "small") << body;
			FGameLoop loop(unlimitedConnections());
			std::vector<Comparison> results;
			for (const int atATime : inFlight)
			{
				results.push_back(compare(loop, origin.url("/small"), body, atATime));
			}
			return results;
		}

	private:
		Comparison compare(FGameLoop& loop, const std::string& url, const std::string& body, int atATime) const
		{
			CorvaneClient corvane(loop);
			BareCurl bare(url, atATime);
			const auto runCorvane = [&]
			{
				const StopWatch watch;
				corvane.fetch(url, requests, atATime, body);
				return requestFiguresOfGame(watch, requests);
			};
			const auto runBare = [&]
			{
				const StopWatch watch;
				bare.fetch(requests, body);
				return requestFigures(watch, requests);
			};
			Comparison empty(fmt::format("small-gets: {} GETs of {} bytes, {} in flight", requests, bytes, atATime), "bare libcurl");
			return alternate(std::move(empty), pairs, WarmUp::OnePair, runCorvane, runBare);
		}

		int requests = 20000;
		std::vector<int> inFlight = {64, 1000};
		std::size_t bytes = 100;
		int pairs = 5;
	};
} // namespace

std::unique_ptr<Workload> makeSmallGets()
{
	return std::make_unique<SmallGets>();
}
