#pragma once

#include "BodyOutput.h"
#include "EventTap.h"

#include <list>

namespace Program
{
	/**
	 * Writes server-sent events to standard output as they come, those of requests and those of nodes, while it lives.
	 * Thread: game thread.
	 */
	class EventLines
	{
	public:
		/** @param bodyOutput  where they go as they are; null = one line for each, as JSON or as words. */
		EventLines(BodyOutput* bodyOutput, bool inJson);

		/** Hears the events of a node that follows a stream. Throws InputError when a body is wanted, as such a node has none. */
		void watch(UObject& node);

	private:
		BodyOutput* const body;
		const bool asJson;
		std::list<EventTap> taps;
	};
} // namespace Program
