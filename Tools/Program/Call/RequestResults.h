#pragma once

#include "EventTap.h"

#include <list>
#include <string>
#include <vector>

namespace Program
{
	/** Remembers every request that completes on the library's events while it lives. Thread: game thread. */
	class RequestResults
	{
	public:
		RequestResults();

		/** @return the pins of the first completion of an ID, or null while there is none. */
		const Json* of(const std::string& requestID) const;
		/** @return the pins of the first completion of all, or null while there is none. */
		const Json* first() const { return completed.empty() ? nullptr : &completed.front(); }

	private:
		std::vector<Json> completed;
		std::list<EventTap> taps;
	};
} // namespace Program
