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

	/** Follows a stream to its end, in this process. */
	void follow(FGameLoop& loop, const std::string& url, const TFunction<void(const FString&)>& onData)
	{
		constexpr double longEnough = 600;
		bool isOver = false;
		UCorvaneFollowEvents::FHandlers handlers;
		handlers.OnEvent = [&](const FString&, const FString&, const FString& data) { onData(data); };
		handlers.OnClose = [&](const FCorvaneTransferReport&) { isOver = true; };
		UCorvaneFollowEvents::Start(FString(url.c_str()), onlyOnce(), handlers);
		loop.WaitFor([&] { return isOver; }, longEnough);
	}

	std::vector<Figure> streamFigures(std::int64_t bytes, const StopWatch& watch, std::int64_t residentBefore)
	{
		return {{"speed", "MB/s", static_cast<double>(bytes) * 1e-6 / watch.seconds()},
			{"peak of memory beyond the first events", "MiB",
				ProcessFigures::toMebibytes(ProcessFigures::peakResidentBytes() - residentBefore)}};
	}

	/** Memory is compared with that after a first stream: threads, buffers and the allocator have what they keep. */
	Figures measureFollowing(const std::string& url, int number, std::int64_t bytes)
	{
		HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {});
		FGameLoop loop;
		int events = 0;
		follow(loop, url + "first", [](const FString&) {});
		ProcessFigures::forgetPeak();
		const std::int64_t before = ProcessFigures::residentBytes();
		const StopWatch watch;
		follow(loop, url + "events", [&](const FString&) { ++events; });
		const Figures taken = streamFigures(bytes, watch, before);
		expect(events, number, "events");
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

	Figures latencies(const std::vector<double>& all, int number)
	{
		expect(static_cast<std::int64_t>(all.size()), number, "events");
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
			command->add_option("--kind", wanted, "Only these: PARSER, STREAM, LATENCY");
			command->add_option("--events", number, "Of PARSER and STREAM, of 100 bytes each")
				->capture_default_str()
				->check(CLI::PositiveNumber);
			command->add_option("--rate", rate, "Of LATENCY, events a second")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--seconds", seconds, "Of LATENCY, length of one run")->capture_default_str()->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair");
			command->add_option("--url", url)->group(""); // for fresh processes alone, like the next
			command->add_flag("--bare", isBare)->group("");
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!url.empty())
			{
				const std::int64_t bytes = static_cast<std::int64_t>(number) * eventBytes;
				printForParent(isBare ? measureBareStream(url, bytes) : measureFollowing(url, number, bytes));
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
				auto bare = std::async(std::launch::async, [&] { return latencies(readBare(server.url()), events); });
				follow(loop, server.url(), [&](const FString& data) { reader.takeStamp(FCString::Atoi64(*data)); });
				beside = bare.get();
				return latencies(reader.latencies(), events);
			};
			return alternate(Comparison(fmt::format("followed-events: LATENCY, {} events, {} a second", events, rate),
								 "bare libcurl and a second thread"),
				pairs, WarmUp::OnePair, both, [&] { return beside; });
		}

		static constexpr int eventBytes = 100;
		static constexpr std::pair<const char*, Comparison (FollowedEvents::*)()> kinds[] = {{"PARSER", &FollowedEvents::compareParser},
			{"STREAM", &FollowedEvents::compareStream}, {"LATENCY", &FollowedEvents::compareLatency}};

		std::vector<std::string> wanted;
		int number = 1'000'000;
		double rate = 500;
		double seconds = 4;
		int pairs = 5;
		std::string url;
		bool isBare = false;
	};
} // namespace

std::unique_ptr<Workload> makeFollowedEvents()
{
	return std::make_unique<FollowedEvents>();
}
