#pragma once

#include "EventTap.h"

#include <chrono>
#include <list>
#include <string>

namespace Program
{
	/** Draws size, speed and time left of transfers on standard error while it lives, if that is a terminal. Thread: game thread. */
	class ProgressBar
	{
	public:
		ProgressBar();
		~ProgressBar(); // leaves an empty line behind
		ProgressBar(const ProgressBar&) = delete;
		ProgressBar& operator=(const ProgressBar&) = delete;

	private:
		using Clock = std::chrono::steady_clock;

		struct Progress
		{
			const char* direction;
			double percent;
			double size; // bytes
			double done; // bytes
		};

		void draw(const Progress& progress);
		static std::string amount(const Progress& progress);
		/** @return the end of the line; empty while there is nothing to tell. */
		std::string speedAndTimeLeft(const Progress& progress, double seconds) const;

		std::list<EventTap> taps;
		bool isDrawn = false;
		Clock::time_point lastDrawn;
		Clock::time_point firstTime; // where the speed is measured from
		double firstDone = 0;
	};
} // namespace Program
