#include "Lab/Script/Entries.h"

#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Behaviours/Tus.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Cassettes/Cassette.h"
#include "Lab/Script/Options.h"

namespace Lab
{
	namespace
	{
		constexpr int usualFileSize = 100'000;

		ContentPtr contentOf(const Options& options, const char* bytes, const char* path, unsigned seed)
		{
			if (options.has(bytes))
			{
				return bytesContent(options.text(bytes));
			}
			return options.has(path) ? fileContent(options.text(path))
									 : madeContent(static_cast<std::uint64_t>(options.number("size", usualFileSize)), seed);
		}

		Behaviour makeFile(const Options& options)
		{
			FileOptions made;
			made.ranges = options.choice<Ranges>(
				"ranges", {{"honest", Ranges::Honest}, {"ignored", Ranges::Ignored}, {"wrongStart", Ranges::WrongStart},
							  {"wrongBytes", Ranges::WrongBytes}, {"wrongTotal", Ranges::WrongTotal}, {"noTotal", Ranges::NoTotal},
							  {"otherValidator", Ranges::OtherValidator}, {"refused", Ranges::Refused}});
			made.validator = options.choice<Validator>(
				"validator", {{"strong", Validator::Strong}, {"weak", Validator::Weak}, {"none", Validator::None}});
			made.tellsTime = options.flag("time", true);
			made.heedsIfRange = options.flag("ifRange", true);
			made.type = options.text("type", made.type);
			const auto seed = static_cast<unsigned>(options.whole("bytesOf"));
			if (options.has("changesAt") || options.has("changesAtByte"))
			{
				made.change = FileChange{contentOf(options, "newBytes", "newPath", seed + 1),
					options.whole("changesAt", options.has("changesAtByte") ? 1 : 2), options.bytes("changesAtByte")};
			}
			return file(contentOf(options, "bytes", "path", seed), made);
		}

		Behaviour makeStatus(const Options& options)
		{
			const bool hasText = options.has("text");
			return status({options.whole("code", 200), options.text("reason"), options.text("retryAfter"),
				hasText ? std::optional(options.text("text")) : std::nullopt});
		}

		Behaviour makeRedirect(const Options& options)
		{
			return redirect({options.text("to", "/"), options.whole("code", 302), options.whole("hops", 1), options.flag("loops"),
				options.text("host")});
		}

		Behaviour makeEvents(const Options& options)
		{
			EventsOptions made;
			for (const nlohmann::json& each : options.list("list"))
			{
				const Options event("events", each.is_object() ? each : nlohmann::json{{"data", each}});
				made.list.push_back({event.text("data"), event.text("event")});
			}
			made.number = options.whole("number", made.number);
			made.pause = options.milliseconds("pause");
			made.hasIds = options.flag("ids");
			made.retryMilliseconds = options.has("retry") ? std::optional(options.whole("retry")) : std::nullopt;
			made.cutsAfter = options.whole("cutsAfter");
			return events(std::move(made));
		}

		Behaviour makeRaw(const Options& options)
		{
			RawAnswer answer;
			Milliseconds pause{};
			for (const nlohmann::json& each : options.list("send"))
			{
				if (each.is_number())
				{
					pause += Milliseconds(each.get<double>());
					continue;
				}
				answer.pieces.push_back({std::exchange(pause, {}),
					each.is_string() ? each.get<std::string>() : (options.fail("send", "a list of texts and pauses"), "")});
			}
			answer.end = options.choice<RawEnd>(
				"ending", {{"close", RawEnd::Close}, {"reset", RawEnd::Reset}, {"stall", RawEnd::Stall}, {"next", RawEnd::NextRequest}});
			return raw(std::move(answer));
		}

		Behaviour makeUpload(const Options& options)
		{
			const std::optional<Milliseconds> waits = options.has("waits") ? std::optional(options.milliseconds("waits")) : std::nullopt;
			return upload({options.number("bytesPerSecond"), waits, options.bytes("refusesAfter"), options.whole("code", 413),
				options.bytes("hangsUpAfter"), options.flag("throwsAway")});
		}

		Behaviour makeTus(const Options& options)
		{
			return tus({options.flag("tells"), options.bytes("mostBytes"),
				options.has("expiresAfter") ? std::optional(options.milliseconds("expiresAfter")) : std::nullopt, options.text("host")});
		}

		Behaviour makeReplay(const Options& options)
		{
			return replay(loadCassette(options.text("path")), options.number("speed", 1));
		}
	} // namespace

	std::vector<CatalogueEntry> bodyEntries()
	{
		return {
			{"text", "a text", {{"text", "the body"}, {"type", "its MIME type"}},
				[](const Options& options) { return text(options.text("text"), options.text("type", "text/plain; charset=utf-8")); }},
			{"file", "a file that may be asked for in parts",
				{{"bytes", "its content"}, {"path", "the file with its content", true},
					{"size", "bytes of made-up content, 100000 unless told"}, {"bytesOf", "a number: other made-up content for each"},
					{"ranges", "honest, ignored, wrongStart, wrongBytes, wrongTotal, noTotal, otherValidator or refused"},
					{"validator", "strong, weak or none"}, {"time", "false: no Last-Modified"},
					{"ifRange", "false: a part comes even of another file than the client has"}, {"type", "its MIME type"},
					{"changesAt", "the number of the request of the same target that finds another file"},
					{"changesAtByte", "the byte at which that request, the first one unless told, sees the other file"},
					{"newBytes", "the other file's content"}, {"newPath", "the file with it", true}},
				makeFile},
			{"status", "a status",
				{{"code", "the number"}, {"reason", "the words behind it"}, {"retryAfter", "seconds, or a date"}, {"text", "the body"}},
				makeStatus},
			{"redirect", "a redirect",
				{{"to", "where the last one leads"}, {"code", "302 unless told"}, {"hops", "how many there are on the way"},
					{"loops", "it leads to itself"}, {"host", "another host for the last one, with the same port unless it names one"}},
				makeRedirect},
			{"echo", "the request's body", {{"head", "the request's lines instead"}},
				[](const Options& options) { return echo(options.flag("head") ? Echo::Head : Echo::Body); }},
			{"events", "a stream of server-sent events",
				{{"list", "their data, or tables with data and event"}, {"number", "of made-up ones, 3 unless told; 0 = no end"},
					{"pause", "milliseconds from one to the next"}, {"ids", "they are numbered, and Last-Event-ID is heeded"},
					{"retry", "milliseconds that the client shall wait"}, {"cutsAfter", "events of one answer"}},
				makeEvents},
			{"form", "what a posted form holds, as JSON", {}, [](const Options&) { return form(); }},
			{"upload", "how many bytes a body has",
				{{"bytesPerSecond", "how fast it is read"}, {"waits", "milliseconds before the first byte is read"},
					{"refusesAfter", "bytes, after which a status comes; the rest is not read"},
					{"code", "of the refusal, 413 unless told"}, {"hangsUpAfter", "bytes"}, {"throwsAway", "nobody looks at the bytes"}},
				makeUpload},
			{"tus", "a server of resumable uploads, for a path and all that begin with it",
				{{"tells", "every answer names the extensions"}, {"mostBytes", "of one upload"},
					{"expiresAfter", "milliseconds after which an upload is gone"},
					{"host", "another host where uploads are said to be, with the same port unless it names one"}},
				makeTus, true, false, true},
			{"raw", "bytes that are sent as they are",
				{{"send", "a list of texts, and of pauses in milliseconds"}, {"ending", "close, reset, stall or next"}}, makeRaw},
			{"cassette", "the recorded answers of a server",
				{{"path", "the file", true}, {"speed", "2 = pauses are half as long, 0 = there are none"}}, makeReplay},
		};
	}
} // namespace Lab
