#include "Containers/StringConv.h"
#include "GameLoop.h"
#include "Kit/BareCurl.h"
#include "Kit/CorvaneClient.h"
#include "Kit/Options.h"
#include "Kit/Stamps.h"
#include "Kit/Statistics.h"
#include "Kit/ThreadHops.h"
#include "Lab/Origin.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <stdexcept>

namespace
{
	Figures figures(const std::vector<double>& latencies, int expected)
	{
		if (latencies.size() != static_cast<std::size_t>(expected))
		{
			throw std::runtime_error(fmt::format("{} of {} events arrived", latencies.size(), expected));
		}
		return {{"latency, p50", "us", Statistics::quantile(latencies, 0.5)}, {"latency, p99", "us", Statistics::quantile(latencies, 0.99)},
			{"latency, max", "us", Statistics::quantile(latencies, 1)}};
	}

	Figures measureCorvane(CorvaneClient& client, const Lab::Origin& server, int events)
	{
		StampReader reader;
		const BoundHandler onEvent(UCorvaneBPLibrary::getCorvaneTarget()->onhttpServerSendEventDelegate,
			[&reader](void* const* arguments)
			{
				const FString& response = *static_cast<const FString*>(arguments[0]);
				reader.take(FTCHARToUTF8(*response, response.Len()).Get());
			});
		client.start(server.url(), true);
		client.waitUntilCompleted(client.completed() + 1);
		return figures(reader.latencies(), events);
	}

	Figures measureBare(const Lab::Origin& server, int events)
	{
		StampReader reader;
		BareCurl(server.url(), 1).stream([&reader](std::string_view bytes) { reader.take(bytes); });
		return figures(reader.latencies(), events);
	}

	class EventLatency final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("event-latency", "From the sending of a server-sent event to its handler");
			command->add_option("--rate", rate, "Events a second")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--seconds", seconds, "Length of one run")->capture_default_str()->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair");
			return command;
		}

		std::vector<Comparison> run() override
		{
			const int events = static_cast<int>(std::lround(std::max(1.0, rate * seconds)));
			Lab::Origin server;
			server.at("/", stamps(rate, events));
			FGameLoop loop;
			CorvaneClient client(loop);
			const auto besides = [&](const char* peer, const std::function<Figures()>& measurePeer)
			{
				Comparison empty(fmt::format("event-latency: {} events, {} a second", events, rate), peer);
				return alternate(
					std::move(empty), pairs, WarmUp::OnePair, [&] { return measureCorvane(client, server, events); }, measurePeer);
			};
			constexpr int hops = 3; // HTTP thread, worker, game thread
			return {besides("bare libcurl", [&] { return measureBare(server, events); }),
				besides("waking three threads", [&] { return figures(measureThreadHops(hops, rate, events), events); })};
		}

	private:
		double rate = 200;
		double seconds = 5;
		int pairs = 3;
	};
} // namespace

std::unique_ptr<Workload> makeEventLatency()
{
	return std::make_unique<EventLatency>();
}
