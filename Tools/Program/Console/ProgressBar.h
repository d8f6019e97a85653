#pragma once

#include "EventTap.h"
#include "TransferRate.h"

#include <chrono>
#include <list>
#include <string>

namespace Program
{
	/** Tells size, speed and time left of transfers on standard error while it lives. Thread: game thread. */
	class ProgressBar
	{
	public:
		/** @param asLines  a line for each event; else one that is drawn again and again, if there is a terminal for it. */
		explicit ProgressBar(bool asLines);
		~ProgressBar(); // leaves an empty line behind
		ProgressBar(const ProgressBar&) = delete;
		ProgressBar& operator=(const ProgressBar&) = delete;

		struct Progress
		{
			const char* direction;
			double percent;
			double size; // bytes
			double done; // bytes
		};

		/** @param size  bytes; negative = nobody knows. @return what to tell of bytes that have come, or that have gone. */
		static Progress received(int64 size, int64 done) { return moved("received", size, done); }
		static Progress sent(int64 size, int64 done) { return moved("sent", size, done); }

		/** Tells, if it does at all, what the events of the library do not. */
		void tell(const Progress& progress);
		/** Tells what a node reports on the way. A node that reports nothing is left alone. */
		void watch(UObject& node);

	private:
		using Clock = std::chrono::steady_clock;

		static Progress moved(const char* direction, int64 size, int64 done);
		static void draw(const Progress& progress, const std::string& text);
		static std::string amount(const Progress& progress);

		const bool asLines;
		const bool isShown;
		std::list<EventTap> taps;
		TransferRate rate;
		bool isDrawn = false;
		Clock::time_point lastDrawn;
	};
} // namespace Program
