#include "GameLoop.h"
#include "Host/Log.h"
#include "Kit/BareCurl.h"
#include "Kit/CorvaneClient.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/Self.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <optional>
#include <stdexcept>

namespace
{
	/** One side's way to make requests that stay unanswered, and to see them end. */
	struct IdleSide
	{
		std::function<void()> startAll;
		/** Goes on until the condition holds. */
		std::function<void(const std::function<bool()>& condition)> runUntil;
		/** Goes on until every request has failed. */
		std::function<void()> runUntilEnded;
	};

	/** Memory that two rounds of idle requests take, all against the time before the first. */
	Figures measureRounds(Lab::Origin& server, const IdleSide& side, int requests)
	{
		const std::int64_t before = ProcessFigures::residentBytes();
		const auto kibibytesEach = [before, requests]
		{ return static_cast<double>(ProcessFigures::residentBytes() - before) / 1024 / requests; };
		Figures taken;
		for (const char* round : {"first round", "second round"})
		{
			side.startAll();
			side.runUntil([&server, requests] { return server.running() >= requests; });
			taken.push_back({fmt::format("running, {}", round), "KiB/request", kibibytesEach()});
			server.dropConnections();
			side.runUntilEnded();
			taken.push_back({fmt::format("ended, {}", round), "KiB/request", kibibytesEach()});
		}
		return taken;
	}

	Figures measureCorvane(int requests)
	{
		constexpr double longEnough = 600;
		HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {}); // every request is meant to fail
		Lab::Origin server({.keepsLog = false});
		server.at("/", Lab::stall());
		FGameLoopSettings settings = unlimitedConnections();
		settings.http.activityTimeoutSeconds = longEnough;
		FGameLoop loop(settings);
		CorvaneClient client(loop);
		int started = 0;
		const IdleSide side{[&]
			{
				for (int number = 0; number < requests; ++number, ++started)
				{
					client.start(server.url());
				}
			},
			[&](const std::function<bool()>& condition)
			{
				if (!loop.WaitFor(condition, longEnough))
				{
					throw std::runtime_error("the requests did not reach the server");
				}
			},
			[&]
			{
				client.waitUntilCompleted(started);
				loop.CollectGarbage();
			}};
		return measureRounds(server, side, requests);
	}

	Figures measureBare(int requests)
	{
		Lab::Origin server({.keepsLog = false});
		server.at("/", Lab::stall());
		std::optional<BareCurl> client; // made late: its handles are part of what is measured
		const IdleSide side{[&]
			{
				if (!client)
				{
					client.emplace(server.url(), requests);
				}
				client->startAll();
			},
			[&](const std::function<bool()>& condition) { client->runUntil(condition); }, [&] { client->runUntil([] { return false; }); }};
		return measureRounds(server, side, requests);
	}

	class IdleRequests final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("idle-requests", "Memory of requests that wait for an answer");
			command->add_option("--requests", requests, "Requests that wait at a time")->capture_default_str()->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs, each run in a fresh process");
			command->add_option("--side", side)->group(""); // for the fresh processes alone
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!side.empty())
			{
				printForParent(side == "corvane" ? measureCorvane(requests) : measureBare(requests));
				return {};
			}
			Comparison empty(fmt::format("idle-requests: {} requests without an answer, memory beyond that of the idle program", requests),
				"bare libcurl");
			return {alternate(
				std::move(empty), pairs, WarmUp::None, [this] { return measureIn("corvane"); }, [this] { return measureIn("bare"); })};
		}

	private:
		/** Memory that was used once is used again, so each run has a process of its own. */
		Figures measureIn(const char* which) const
		{
			return runSelf(fmt::format("idle-requests --requests {} --side {}", requests, which));
		}

		int requests = 500;
		int pairs = 3;
		std::string side;
	};
} // namespace

std::unique_ptr<Workload> makeIdleRequests()
{
	return std::make_unique<IdleRequests>();
}
