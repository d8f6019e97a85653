#include "GameLoop.h"
#include "Kit/BareCurl.h"
#include "Kit/CorvaneClient.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/RequestFigures.h"
#include "NginxServer.h"
#include "RawServer.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fstream>
#include <sstream>

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
			command->add_flag("--same-headers", sameHeaders, "The peer sends the header lines that Corvane's requests have, too");
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
		/** @return lines that a GET of Corvane's has and a bare one has not, as an origin gets them. */
		static std::vector<std::string> headersOf(FGameLoop& loop)
		{
			const RawServer origin(answering([](const std::string&) { return answer(200, "x"); }));
			CorvaneClient(loop).fetch(origin.url(), 1, 1, "x");
			std::istringstream head(origin.requests().front());
			std::vector<std::string> lines;
			for (std::string line; std::getline(head, line) && line != "\r";)
			{
				const bool isBare = line.starts_with("GET ") || line.starts_with("Host:") || line.starts_with("Accept:");
				lines.insert(lines.end(), isBare ? 0 : 1, line.substr(0, line.size() - 1));
			}
			return lines;
		}

		Comparison compare(FGameLoop& loop, const std::string& url, const std::string& body, int atATime) const
		{
			CorvaneClient corvane(loop);
			BareCurl bare(url, atATime);
			if (sameHeaders)
			{
				bare.addHeaders(headersOf(loop));
			}
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

		bool sameHeaders = false;
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
