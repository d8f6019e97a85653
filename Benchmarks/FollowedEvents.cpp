#include "Containers/StringConv.h"
#include "CorvaneFollowEvents.h"
#include "CorvaneTransfer.h"
#include "Events/EventParser.h"
#include "GameLoop.h"
#include "Host/Log.h"
#include "Kit/BareCurl.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/Self.h"
#include "Kit/Stamps.h"
#include "Kit/Statistics.h"
#include "Kit/ThreadHandOver.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "Misc/CString.h"
#include "NginxServer.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <fmt/format.h>
#include <fstream>
#include <future>
#include <optional>
#include <stdexcept>
#include <thread>

namespace
{
	/** @param bytes  of each event. */
	std::string eventsOf(int number, std::size_t bytes)
	{
		std::string all;
		all.reserve(static_cast<std::size_t>(number) * bytes);
		for (int event = 1; event <= number; ++event)
		{
			std::string one = fmt::format("id: {}\nevent: price\ndata: ", event);
			one.resize(std::max(one.size() + 1, bytes - 2), 'x');
			all += one + "\n\n";
		}
		return all;
	}

	void expect(std::int64_t there, std::int64_t wanted, const char* what)
	{
		if (there != wanted)
		{
			throw std::runtime_error(fmt::format("{} {} instead of {}", there, what, wanted));
		}
	}

	/** Calls a function with the pieces in which a network brings bytes. */
	template <class Take>
	void cut(const std::string& bytes, const Take& take)
	{
		constexpr std::size_t piece = 16 << 10;
		for (std::size_t at = 0; at < bytes.size(); at += piece)
		{
			take(bytes.data() + at, std::min(piece, bytes.size() - at));
		}
	}

	Figure speed(const std::string& bytes, double seconds)
	{
		return {"speed", "MB/s", static_cast<double>(bytes.size()) * 1e-6 / seconds};
	}

	/** The parser by itself. */
	Figures parse(const std::string& bytes, int number)
	{
		FCorvaneEventParser parser(1 << 20);
		int events = 0;
		const StopWatch watch;
		cut(bytes,
			[&](const char* at, std::size_t left)
			{
				while (left > 0)
				{
					int64 taken = 0;
					events += parser.Read(reinterpret_cast<const uint8*>(at), static_cast<int64>(left), taken) == ECorvaneEventStep::Event;
					at += taken;
					left -= static_cast<std::size_t>(taken);
				}
			});
		const double seconds = watch.seconds();
		expect(events, number, "events");
		return {speed(bytes, seconds)};
	}

	/** The least that anybody has to do who looks at lines. */
	Figures scan(const std::string& bytes, int number)
	{
		int ends = 0;
		const StopWatch watch;
		cut(bytes,
			[&](const char* at, std::size_t left)
			{
				const char* const end = at + left;
				while ((at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)))))
				{
					++ends;
					++at;
				}
			});
		const double seconds = watch.seconds();
		expect(ends, 4 * number, "lines");
		return {speed(bytes, seconds)};
	}

	FCorvaneFollowOptions onlyOnce()
	{
		FCorvaneFollowOptions options;
		options.bReconnect = false;
		return options;
	}

	FCorvaneFollowOptions overDrops()
	{
		FCorvaneFollowOptions options;
		options.ReconnectSeconds = 0.001;
		return options;
	}

	/** Follows a stream until the server ends it, in this process. @return the connections that it came over. */
	int follow(FGameLoop& loop, const std::string& url, const FCorvaneFollowOptions& options,
		const TFunction<void(const FString& id, const FString& data)>& onEvent)
	{
		constexpr double longEnough = 600;
		int connections = 0;
		std::optional<FCorvaneTransferReport> report;
		UCorvaneFollowEvents::FHandlers handlers;
		handlers.OnOpen = [&](const FCorvaneTransferReport&) { ++connections; };
		handlers.OnEvent = [&](const FString& id, const FString&, const FString& data) { onEvent(id, data); };
		handlers.OnClose = [&](const FCorvaneTransferReport& told) { report = told; };
		UCorvaneFollowEvents::Start(FString(url.c_str()), options, handlers);
		loop.WaitFor([&] { return report.has_value(); }, longEnough);
		if (!report || report->Outcome != ECorvaneTransferOutcome::Ended)
		{
			throw std::runtime_error(
				report ? "followed stream: " + std::string(FTCHARToUTF8(*report->Sentence).Get()) : "a followed stream that does not end");
		}
		return connections;
	}

	std::vector<Figure> streamFigures(std::int64_t bytes, const StopWatch& watch, std::int64_t residentBefore)
	{
		return {{"speed", "MB/s", static_cast<double>(bytes) * 1e-6 / watch.seconds()},
			{"peak of memory beyond the first events", "MiB",
				ProcessFigures::toMebibytes(ProcessFigures::peakResidentBytes() - residentBefore)}};
	}

	/** Memory is compared with that after a first stream: threads, buffers and the allocator have what they keep. */
	Figures measureFollowing(const std::string& url, const FCorvaneFollowOptions& options, int number, std::int64_t bytes)
	{
		HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {});
		FGameLoop loop;
		int events = 0;
		int inOrder = 0;
		follow(loop, url + "first", options, [](const FString&, const FString&) {});
		ProcessFigures::forgetPeak();
		const std::int64_t before = ProcessFigures::residentBytes();
		const StopWatch watch;
		const int connections =
			follow(loop, url + "events", options, [&](const FString& id, const FString&) { inOrder += FCString::Atoi64(*id) == ++events; });
		Figures taken = streamFigures(bytes, watch, before);
		taken.push_back({"connections", "", static_cast<double>(connections)});
		expect(events, number, "events");
		expect(inOrder, number, "events in their places");
		return taken;
	}

	Figures measureBareStream(const std::string& url, std::int64_t bytes)
	{
		std::int64_t seen = 0;
		BareCurl curl(url + "events", 1);
		ProcessFigures::forgetPeak();
		const std::int64_t before = ProcessFigures::residentBytes();
		const StopWatch watch;
		{
			ThreadHandOver other([&](std::string_view taken) { seen += static_cast<std::int64_t>(taken.size()); });
			curl.stream([&](std::string_view piece) { other.put(piece); });
		}
		const Figures taken = streamFigures(bytes, watch, before);
		expect(seen, bytes, "bytes");
		return taken;
	}

	/** Goes on behind the event that the client saw last, and breaks off in the middle of one until no more are left. */
	Lab::Behaviour breakingOff(std::string all, std::size_t bytesOfEvent, std::size_t breaks)
	{
		const std::size_t each = all.size() / bytesOfEvent / (breaks + 1) + 1;
		return Lab::Behaviour(
			[all = std::move(all), bytesOfEvent, each](const Lab::Request& request) -> Lab::Behaviour
			{
				const std::string_view last = request.header("Last-Event-ID");
				const std::size_t from = last.empty() ? 0 : std::stoul(std::string(last)) * bytesOfEvent;
				const std::size_t bytes = (each + 1) * bytesOfEvent;
				if (from >= all.size())
				{
					return Lab::status({.code = 204});
				}
				return std::vector{Lab::text(all.substr(from, bytes), "text/event-stream"), Lab::dropAfter(bytes - bytesOfEvent / 2)};
			});
	}

	Figures latencies(const std::vector<double>& all, int number, const char* what)
	{
		expect(static_cast<std::int64_t>(all.size()), number, what);
		return {{"latency, p50", "us", Statistics::quantile(all, 0.5)}, {"latency, p99", "us", Statistics::quantile(all, 0.99)}};
	}

	std::vector<double> readBare(const std::string& url)
	{
		StampReader reader;
		{
			ThreadHandOver other([&](std::string_view bytes) { reader.take(bytes); });
			BareCurl(url, 1).stream([&](std::string_view piece) { other.put(piece); });
		}
		return reader.latencies();
	}

	class FollowedEvents final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("followed-events", "Server-sent events through the node that follows a stream");
			command->add_option("--kind", wanted, "Only these: PARSER, STREAM, RECONNECTS, LATENCY");
			command->add_option("--events", number, "Of all but LATENCY, of 100 bytes each")
				->capture_default_str()
				->check(CLI::PositiveNumber);
			command->add_option("--breaks", breaks, "Of RECONNECTS, how often the stream breaks off")->capture_default_str();
			command->add_option("--rate", rate, "Of LATENCY, events a second")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--seconds", seconds, "Of LATENCY, length of one run")->capture_default_str()->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair");
			command->add_option("--url", url)->group(""); // for fresh processes alone, like the next
			command->add_flag("--bare", isBare)->group("");
			command->add_flag("--reconnect", reconnects)->group("");
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!url.empty())
			{
				const std::int64_t bytes = static_cast<std::int64_t>(number) * eventBytes;
				printForParent(
					isBare ? measureBareStream(url, bytes) : measureFollowing(url, reconnects ? overDrops() : onlyOnce(), number, bytes));
				return {};
			}
			std::vector<Comparison> results;
			for (const auto& [name, compare] : kinds)
			{
				if (wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end())
				{
					results.push_back((this->*compare)());
				}
			}
			return results;
		}

	private:
		Comparison compareParser()
		{
			const std::string bytes = eventsOf(number, eventBytes);
			return alternate(
				Comparison(fmt::format("followed-events: PARSER, {} events", number), "memchr of the ends of lines"), pairs,
				WarmUp::OnePair, [&] { return parse(bytes, number); }, [&] { return scan(bytes, number); });
		}

		Comparison compareStream()
		{
			const NginxServer origin({.serverConfig = "default_type text/event-stream; types {} sendfile on;"});
			std::ofstream(origin.filesDirectory() / "events") << eventsOf(number, eventBytes);
			std::ofstream(origin.filesDirectory() / "first") << eventsOf(number / 20, eventBytes);
			const std::string words = fmt::format("followed-events --events {} --url {}", number, origin.url("/"));
			return alternate(
				Comparison(fmt::format("followed-events: STREAM, {} events", number), "bare libcurl and a second thread"), pairs,
				WarmUp::OnePair, [&] { return runSelf(words); }, [&] { return runSelf(words + " --bare"); });
		}

		Comparison compareReconnects()
		{
			Lab::Origin server({.keepsLog = false});
			server.at("/whole/first", breakingOff(eventsOf(number / 20, eventBytes), eventBytes, 0));
			server.at("/whole/events", breakingOff(eventsOf(number, eventBytes), eventBytes, 0));
			server.at("/broken/first", breakingOff(eventsOf(number / 20, eventBytes), eventBytes, 5));
			server.at("/broken/events", breakingOff(eventsOf(number, eventBytes), eventBytes, breaks));
			const auto words = [&](const char* place)
			{ return fmt::format("followed-events --reconnect --events {} --url {}", number, server.url(place)); };
			return alternate(
				Comparison(fmt::format("followed-events: RECONNECTS, {} events, breaks off {} times", number, breaks),
					"the same over one connection"),
				pairs, WarmUp::OnePair, [&] { return runSelf(words("/broken/")); }, [&] { return runSelf(words("/whole/")); });
		}

		Comparison compareLatency()
		{
			const int events = static_cast<int>(rate * seconds);
			Lab::Origin server;
			server.at("/", stamps(rate, events));
			FGameLoop loop;
			Figures beside;
			const auto both = [&] // at the same time: what the machine does for a while then meets both
			{
				StampReader reader;
				auto bare =
					std::async(std::launch::async, [&] { return latencies(readBare(server.url()), events, "events of the bare loop"); });
				follow(loop, server.url(), onlyOnce(),
					[&](const FString&, const FString& data) { reader.takeStamp(FCString::Atoi64(*data)); });
				beside = bare.get();
				return latencies(reader.latencies(), events, "followed events");
			};
			return alternate(Comparison(fmt::format("followed-events: LATENCY, {} events, {} a second", events, rate),
								 "bare libcurl and a second thread"),
				pairs, WarmUp::OnePair, both, [&] { return beside; });
		}

		static constexpr int eventBytes = 100;
		static constexpr std::pair<const char*, Comparison (FollowedEvents::*)()> kinds[] = {{"PARSER", &FollowedEvents::compareParser},
			{"STREAM", &FollowedEvents::compareStream}, {"RECONNECTS", &FollowedEvents::compareReconnects},
			{"LATENCY", &FollowedEvents::compareLatency}};

		std::vector<std::string> wanted;
		int number = 1'000'000;
		std::size_t breaks = 100;
		double rate = 500;
		double seconds = 4;
		int pairs = 5;
		std::string url;
		bool isBare = false;
		bool reconnects = false;
	};
} // namespace

std::unique_ptr<Workload> makeFollowedEvents()
{
	return std::make_unique<FollowedEvents>();
}
