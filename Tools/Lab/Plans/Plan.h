#pragma once

#include "Lab/Plans/Content.h"
#include "Lab/Plans/Gate.h"
#include "Lab/Plans/Request.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Lab
{
	using Milliseconds = std::chrono::duration<double, std::milli>;

	/** Where the reader of a body learns of its end. */
	enum class Framing
	{
		Length,
		Chunked,
		UntilClose
	};

	enum class ChunkFault
	{
		None,
		BadSize, // the second chunk's size is no number
		NoLineEnd, // nothing separates the first chunk from the second
		NoEnd // the last chunk never comes
	};

	/** A place in an answer. */
	struct Place
	{
		std::optional<std::uint64_t> byte = {}; // so many bytes of the body are out
		std::optional<double> share = {}; // so much of the body is out, 0 to 1
		// Neither = before the answer.
	};

	/** What happens at a place of an answer. */
	struct Event
	{
		enum class Kind
		{
			Drop, // the connection ends
			Reset, // the same, with an error
			Stall, // nothing more comes
			Pause,
			Hold // until the gate opens
		};
		Kind kind = Kind::Drop;
		Place place;
		Milliseconds pause = {};
		Gate gate = {};
	};

	/** How the bytes of a body are spread over time. */
	struct Pacing
	{
		std::vector<std::size_t> sizes; // of the pieces; the last one goes for all that follow. None = as large as can be
		Milliseconds pause = {}; // from one piece to the next
		double bytesPerSecond = 0; // 0 = as fast as can be
	};

	/** Bytes that go out as they are, after a pause. */
	struct RawPiece
	{
		Milliseconds pause = {};
		std::string bytes;
	};

	/** How a raw answer ends. */
	enum class RawEnd
	{
		Close,
		Reset,
		Stall,
		NextRequest
	};

	struct RawAnswer
	{
		std::vector<RawPiece> pieces;
		RawEnd end = RawEnd::Close;
	};

	/** How the body of a request is read. */
	struct Intake
	{
		double bytesPerSecond = 0; // 0 = as fast as it comes
		std::optional<std::uint64_t> answersAfter; // so many bytes, without reading on
		std::optional<std::uint64_t> hangsUpAfter; // so many bytes, without an answer
		bool throwsAway = false; // nobody looks at the bytes
		std::optional<Gate> gate; // nothing is read until it opens
		std::optional<Milliseconds> pause; // nor before so much time has passed
		std::uint64_t keeps = 64 << 20; // bytes at most

		std::function<void(const Request&)> onBroken = {}; // hears of a request whose body ends too early, with what came of it

		/** How many bytes are read, if more come. */
		std::uint64_t stopsAfter() const { return std::min(answersAfter.value_or(endless), hangsUpAfter.value_or(endless)); }
	};

	/** Hands out a body piece by piece, when each is due; nothing = the end. */
	using PieceSource = std::function<std::optional<std::string>()>;

	/** An answer, as behaviours have put it together. */
	struct Plan
	{
		int status = 200;
		std::string reason; // empty = the usual one
		int minorVersion = 1;
		std::vector<Header> headers;
		bool headEnds = true; // false = the body follows the headers without an empty line
		ContentPtr content; // null = none
		PieceSource pieces; // takes the place of the content; its length is not known before
		Framing framing = Framing::Length;
		std::optional<std::uint64_t> announced; // a length to announce in place of the true one
		ChunkFault chunkFault = ChunkFault::None;
		bool keepsConnection = true;
		Pacing pacing;
		std::vector<Event> events;
		std::optional<RawAnswer> raw; // takes the place of all of the above

		/** Replaces a header, or adds it. */
		void setHeader(std::string_view name, std::string value);
		void setText(std::string text, const std::string& type = "text/plain; charset=utf-8");
	};
} // namespace Lab
