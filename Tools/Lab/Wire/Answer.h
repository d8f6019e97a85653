#pragma once

#include "Lab/Plans/Plan.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace Lab
{
	using Clock = std::chrono::steady_clock;

	inline Clock::time_point later(Clock::time_point time, Milliseconds pause)
	{
		return time + std::chrono::duration_cast<Clock::duration>(pause);
	}

	/** What a connection has to do next for its answer. */
	struct Step
	{
		enum class Kind
		{
			Send,
			WaitUntil,
			WaitForGate,
			Stall, // until the client leaves
			Close, // the answer is complete
			Drop, // it is not
			Reset,
			Done // the next request may come
		};
		Kind kind = Kind::Done;
		std::string_view bytes = {}; // live until the next step is asked for
		Clock::time_point time = {};
		Gate* gate = nullptr;
	};

	/** The one place that makes the bytes of an answer out of a plan. Thread: one at a time. */
	class Answer
	{
	public:
		/** @param request  that it answers; not kept. */
		Answer(Plan plan, const Request& request);

		/** @return what comes next, now that the last step has been done. */
		Step next();
		/** Whether another request may follow on the connection. */
		bool keepsConnection() const { return plan.keepsConnection; }
		int status() const { return plan.raw ? 0 : plan.status; }

	private:
		void prepareFraming(const Request& request);
		void prepareEvents();
		std::string makeHead() const;
		Step nextRaw();
		Step happen(Event& event);
		Step sendHead();
		Step sendPiece();
		Step sendEnd();
		std::string_view takePiece(std::size_t most);
		std::size_t pieceSize() const;
		std::uint64_t nextEventPlace() const;
		bool isAtEnd();
		void pace();

		Plan plan;
		std::uint64_t bodySize = 0; // on its way, without what frames it
		bool sendsBody = true;
		bool isHeadOut = false;
		bool isEndOut = false;
		std::uint64_t position = 0; // bytes of the body that are out
		std::size_t piecesOut = 0;
		std::size_t nextEvent = 0;
		Clock::time_point bodyStart;
		Clock::time_point due; // of the next piece
		std::optional<std::string> sourcePiece; // what the source handed out last
		std::string_view sourceRest; // what of it is not out yet
		std::string buffer; // what a step shows, if it had to be put together
	};
} // namespace Lab
