#pragma once

#include "Lab/Plans/Behaviour.h"

#include <optional>
#include <string>
#include <vector>

// What may go wrong on the way of an answer that others have made. Places count bytes of the body as it goes out, without
// what frames it; a place that no answer reaches is none.
namespace Lab
{
	struct DropOptions
	{
		Place at = {}; // without one: before the answer
		bool resets = false; // the client sees an error instead of an end
	};
	/** The connection ends in the middle. */
	Behaviour drop(DropOptions options = {});
	inline Behaviour dropAfter(std::uint64_t bytes)
	{
		return drop({.at = {.byte = bytes}});
	}

	struct StallOptions
	{
		Place at = {}; // without one: before the answer
		std::optional<Milliseconds> time = {}; // without one: until the client leaves
	};
	/** Nothing comes for a while. */
	Behaviour stall(StallOptions options = {});
	/** The same until somebody opens the gate. */
	Behaviour hold(Gate gate, Place at = {});
	/** The body of the request is left unread until somebody opens the gate. */
	Behaviour holdBody(Gate gate);

	/** So many bytes of the body in each second. */
	Behaviour rate(double bytesPerSecond);
	/** The body comes in pieces of these sizes, the last one again and again, with a pause between two of them. */
	Behaviour pieces(std::vector<std::size_t> sizes, Milliseconds pause = {});

	struct LengthOptions
	{
		std::optional<std::uint64_t> says = {}; // another length than the true one
		bool isMissing = false; // the end of the connection is the end of the body
	};
	Behaviour length(LengthOptions options);

	struct ChunkedOptions
	{
		std::size_t size = 0; // of a chunk; 0 = as large as can be
		ChunkFault fault = ChunkFault::None;
	};
	Behaviour chunked(ChunkedOptions options = {});

	struct GzipOptions
	{
		bool always = false; // also when the client has not said that it takes it
		bool isBroken = false; // a byte in the middle is wrong
	};
	/** The body is compressed. It has to have an end. */
	Behaviour gzip(GzipOptions options = {});

	/** Header after header, and no end of them. */
	Behaviour endlessHeaders();
	/** Answers like an old server: no chunks, and the connection ends with the answer. */
	Behaviour http10();
	/** The connection ends with the answer. */
	Behaviour closing();
	/** Headers that replace those of their names, or come in addition. */
	Behaviour headers(std::vector<Header> headers);
} // namespace Lab
