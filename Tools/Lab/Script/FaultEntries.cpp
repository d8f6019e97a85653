#include "Lab/Script/Entries.h"

#include "Lab/Behaviours/Faults.h"
#include "Lab/Script/Options.h"

namespace Lab
{
	namespace
	{
		Behaviour makeStall(const Options& options)
		{
			return stall(
				{options.place("after"), options.has("milliseconds") ? std::optional(options.milliseconds("milliseconds")) : std::nullopt});
		}

		Behaviour makeChunked(const Options& options)
		{
			return chunked({static_cast<std::size_t>(options.number("size")),
				options.choice<ChunkFault>("fault", {{"none", ChunkFault::None}, {"badSize", ChunkFault::BadSize},
														{"noLineEnd", ChunkFault::NoLineEnd}, {"noEnd", ChunkFault::NoEnd}})});
		}

		Behaviour makeHeaders(const Options& options)
		{
			std::vector<Header> made;
			for (const auto& [name, value] : options.all().items())
			{
				made.push_back({name, options.text(name.c_str())});
			}
			return headers(std::move(made));
		}
	} // namespace

	std::vector<CatalogueEntry> faultEntries()
	{
		const OptionEntry after{"after", "bytes of the body, or a share such as 90%; without it, before the answer"};
		return {
			{"drop", "the connection ends", {after, {"resets", "with an error"}},
				[](const Options& options) {
					return drop({options.place("after"), options.flag("resets")});
				},
				false},
			{"stall", "nothing comes", {after, {"milliseconds", "how long; for ever unless told"}}, makeStall, false},
			{"rate", "the body comes slowly", {{"bytes", "per second"}},
				[](const Options& options) { return rate(options.number("bytes", 10'000)); }, false},
			{"pieces", "the body comes in pieces",
				{{"sizes", "bytes of each; the last one goes for all that follow"}, {"pause", "milliseconds between two"}},
				[](const Options& options) { return pieces(options.sizes("sizes"), options.milliseconds("pause")); }, false},
			{"length", "the length is told wrongly", {{"says", "bytes"}, {"missing", "it is not told"}},
				[](const Options& options) {
					return length({options.bytes("says"), options.flag("missing")});
				},
				false},
			{"chunked", "the body comes in chunks", {{"size", "bytes of each"}, {"fault", "none, badSize, noLineEnd or noEnd"}},
				makeChunked, false},
			{"gzip", "the body is compressed",
				{{"always", "even when the client has not asked"}, {"broken", "a byte in the middle is wrong"}},
				[](const Options& options) {
					return gzip({options.flag("always"), options.flag("broken")});
				},
				false},
			{"headers", "further headers, by their names", {}, makeHeaders, false, true},
			{"endlessHeaders", "header after header", {}, [](const Options&) { return endlessHeaders(); }, false},
			{"http10", "the answer of an old server", {}, [](const Options&) { return http10(); }, false},
			{"closing", "the connection ends with the answer", {}, [](const Options&) { return closing(); }, false},
		};
	}
} // namespace Lab
