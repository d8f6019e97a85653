#include "Lab/Wire/Answer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace Lab
{
	namespace
	{
		constexpr std::size_t largestPiece = 1 << 20;
		constexpr std::size_t largestChunk = 64 << 10;
		constexpr std::size_t largestWithHead = 16 << 10; // copied, to spare a system call

		const char* usualReason(int status)
		{
			constexpr std::array<std::pair<int, const char*>, 22> reasons{{{100, "Continue"}, {200, "OK"}, {201, "Created"},
				{202, "Accepted"}, {204, "No Content"}, {206, "Partial Content"}, {301, "Moved Permanently"}, {302, "Found"},
				{303, "See Other"}, {304, "Not Modified"}, {307, "Temporary Redirect"}, {308, "Permanent Redirect"}, {400, "Bad Request"},
				{401, "Unauthorized"}, {403, "Forbidden"}, {404, "Not Found"}, {409, "Conflict"}, {413, "Content Too Large"},
				{416, "Range Not Satisfiable"}, {429, "Too Many Requests"}, {500, "Internal Server Error"}, {503, "Service Unavailable"}}};
			const auto found =
				std::find_if(reasons.begin(), reasons.end(), [status](const auto& reason) { return reason.first == status; });
			return found == reasons.end() ? "Status" : found->second;
		}

		bool hasNoBody(int status)
		{
			return status < 200 || status == 204 || status == 304;
		}

		void appendHex(std::string& text, std::size_t number)
		{
			std::array<char, 16> digits{};
			text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr);
		}

		/** Before the answer is before its first byte. */
		std::int64_t placeIn(const Place& place, std::uint64_t size)
		{
			if (place.share)
			{
				return static_cast<std::int64_t>(std::floor(*place.share * static_cast<double>(size)));
			}
			return place.byte ? static_cast<std::int64_t>(std::min(*place.byte, endless)) : -1;
		}
	} // namespace

	Answer::Answer(Plan inPlan, const Request& request)
		: plan(std::move(inPlan))
	{
		if (plan.raw)
		{
			plan.keepsConnection = plan.raw->end == RawEnd::NextRequest;
			due = Clock::now();
			return;
		}
		prepareFraming(request);
		prepareEvents();
	}

	void Answer::prepareFraming(const Request& request)
	{
		bodySize = plan.pieces ? endless : plan.content ? plan.content->size() : 0;
		const bool isOld = request.minorVersion == 0 || plan.minorVersion == 0;
		if (plan.framing == Framing::Length && bodySize == endless)
		{
			plan.framing = Framing::Chunked;
		}
		if (plan.framing == Framing::Chunked && isOld)
		{
			plan.framing = Framing::UntilClose;
		}
		const bool isLengthTrue = !plan.announced || *plan.announced == bodySize;
		const bool isFramed = plan.framing == Framing::Length ? isLengthTrue : plan.framing == Framing::Chunked;
		plan.keepsConnection = plan.keepsConnection && request.keepsConnection && isFramed && plan.chunkFault == ChunkFault::None;
		sendsBody = request.method != "HEAD" && !hasNoBody(plan.status);
	}

	void Answer::prepareEvents()
	{
		std::stable_sort(plan.events.begin(), plan.events.end(),
			[this](const Event& a, const Event& b) { return placeIn(a.place, bodySize) < placeIn(b.place, bodySize); });
	}

	std::string Answer::makeHead() const
	{
		std::string head = "HTTP/1." + std::to_string(plan.minorVersion) + ' ' + std::to_string(plan.status) + ' ';
		head += plan.reason.empty() ? usualReason(plan.status) : plan.reason;
		head += "\r\n";
		for (const Header& header : plan.headers)
		{
			head.append(header.name).append(": ").append(header.value).append("\r\n");
		}
		if (plan.framing == Framing::Length && !hasNoBody(plan.status))
		{
			head.append("Content-Length: ").append(std::to_string(plan.announced.value_or(bodySize))).append("\r\n");
		}
		head += plan.framing == Framing::Chunked ? "Transfer-Encoding: chunked\r\n" : "";
		head += plan.keepsConnection ? "" : "Connection: close\r\n";
		return plan.headEnds ? head + "\r\n" : head;
	}

	Step Answer::next()
	{
		if (plan.raw)
		{
			return nextRaw();
		}
		const std::int64_t reached = isHeadOut ? static_cast<std::int64_t>(position) : -1;
		if (nextEvent < plan.events.size() && placeIn(plan.events[nextEvent].place, bodySize) <= reached)
		{
			return happen(plan.events[nextEvent++]);
		}
		if (!isHeadOut)
		{
			return sendHead();
		}
		if (!sendsBody || isEndOut)
		{
			return {plan.keepsConnection ? Step::Kind::Done : Step::Kind::Close};
		}
		if (isAtEnd())
		{
			return sendEnd();
		}
		if (due > Clock::now())
		{
			return {Step::Kind::WaitUntil, {}, due};
		}
		return sendPiece();
	}

	Step Answer::nextRaw()
	{
		if (piecesOut == plan.raw->pieces.size())
		{
			switch (plan.raw->end)
			{
			case RawEnd::Close:
				return {Step::Kind::Close};
			case RawEnd::Reset:
				return {Step::Kind::Reset};
			case RawEnd::Stall:
				return {Step::Kind::Stall};
			case RawEnd::NextRequest:
				break;
			}
			return {};
		}
		const RawPiece& piece = plan.raw->pieces[piecesOut];
		const Clock::time_point start = later(due, piece.pause);
		if (start > Clock::now())
		{
			return {Step::Kind::WaitUntil, {}, start};
		}
		due = start; // not now: what came late does not move all that follows
		++piecesOut;
		return {Step::Kind::Send, piece.bytes};
	}

	Step Answer::happen(Event& event)
	{
		switch (event.kind)
		{
		case Event::Kind::Drop:
			return {Step::Kind::Drop};
		case Event::Kind::Reset:
			return {Step::Kind::Reset};
		case Event::Kind::Stall:
			return {Step::Kind::Stall};
		case Event::Kind::Hold:
			return {Step::Kind::WaitForGate, {}, {}, &event.gate};
		case Event::Kind::Pause:
			break;
		}
		return {Step::Kind::WaitUntil, {}, later(Clock::now(), event.pause)};
	}

	Step Answer::sendHead()
	{
		isHeadOut = true;
		bodyStart = due = Clock::now();
		buffer = makeHead();
		const bool isOneWrite = sendsBody && !plan.pieces && plan.framing == Framing::Length && pieceSize() == largestPiece;
		if (isOneWrite && bodySize > 0 && bodySize <= largestWithHead && nextEventPlace() >= bodySize)
		{
			buffer += takePiece(largestPiece);
		}
		return {Step::Kind::Send, buffer};
	}

	std::size_t Answer::pieceSize() const
	{
		if (!plan.pacing.sizes.empty())
		{
			return std::max<std::size_t>(1, plan.pacing.sizes[std::min(piecesOut, plan.pacing.sizes.size() - 1)]);
		}
		if (plan.pacing.bytesPerSecond > 0)
		{
			constexpr double piecesPerSecond = 50;
			return static_cast<std::size_t>(std::clamp(plan.pacing.bytesPerSecond / piecesPerSecond, 1., double(largestPiece)));
		}
		return plan.framing == Framing::Chunked && !plan.pieces ? largestChunk : largestPiece;
	}

	/** How many bytes of the body go out before something happens. */
	std::uint64_t Answer::nextEventPlace() const
	{
		return nextEvent < plan.events.size()
				   ? static_cast<std::uint64_t>(std::max<std::int64_t>(0, placeIn(plan.events[nextEvent].place, bodySize)))
				   : endless;
	}

	bool Answer::isAtEnd()
	{
		if (!plan.pieces)
		{
			return position == bodySize;
		}
		if (sourceRest.empty())
		{
			if (due > Clock::now())
			{
				return false; // a piece is made when it is due
			}
			sourcePiece = plan.pieces();
			sourceRest = sourcePiece ? std::string_view(*sourcePiece) : std::string_view();
		}
		return !sourcePiece || sourcePiece->empty();
	}

	std::string_view Answer::takePiece(std::size_t most)
	{
		std::string_view piece;
		if (plan.pieces)
		{
			piece = sourceRest.substr(0, most);
			sourceRest.remove_prefix(piece.size());
		}
		else
		{
			piece = plan.content->at(position, most);
		}
		position += piece.size();
		++piecesOut;
		return piece;
	}

	Step Answer::sendPiece()
	{
		const std::uint64_t room = nextEventPlace() - position;
		const bool isFirst = piecesOut == 0;
		const std::string_view piece = takePiece(static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize(), room)));
		pace();
		if (plan.framing != Framing::Chunked)
		{
			return {Step::Kind::Send, piece};
		}
		buffer.clear();
		buffer += !isFirst && plan.chunkFault == ChunkFault::BadSize ? "x" : "";
		appendHex(buffer, piece.size());
		buffer.append("\r\n").append(piece);
		buffer += isFirst && plan.chunkFault == ChunkFault::NoLineEnd ? "" : "\r\n";
		return {Step::Kind::Send, buffer};
	}

	/** Counted from the start, so that a piece that comes late does not make all others late. */
	void Answer::pace()
	{
		if (plan.pacing.pause.count() > 0 && sourceRest.empty())
		{
			due = later(bodyStart, static_cast<double>(piecesOut) * plan.pacing.pause);
		}
		if (plan.pacing.bytesPerSecond > 0)
		{
			due = std::max(due, later(bodyStart, Milliseconds(1000 * static_cast<double>(position) / plan.pacing.bytesPerSecond)));
		}
	}

	Step Answer::sendEnd()
	{
		isEndOut = true;
		const bool needsEnd = plan.framing == Framing::Chunked && plan.chunkFault != ChunkFault::NoEnd;
		return {Step::Kind::Send, needsEnd ? "0\r\n\r\n" : ""};
	}
} // namespace Lab
