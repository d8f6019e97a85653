#pragma once

#include "EventTap.h"

#include <list>

namespace Program
{
	/** Draws the progress of transfers on standard error while it lives, if that is a terminal. Thread: game thread. */
	class ProgressBar
	{
	public:
		ProgressBar();
		~ProgressBar(); // leaves an empty line behind
		ProgressBar(const ProgressBar&) = delete;
		ProgressBar& operator=(const ProgressBar&) = delete;

	private:
		void draw(const char* direction, double percent);

		std::list<EventTap> taps;
		bool isDrawn = false;
	};
} // namespace Program
