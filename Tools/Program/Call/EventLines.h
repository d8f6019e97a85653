#pragma once

#include "BodyOutput.h"
#include "EventTap.h"

#include <optional>

namespace Program
{
	/** Writes server-sent events to standard output as they come, while it lives. Thread: game thread. */
	class EventLines
	{
	public:
		/** @param body  where they go as they are; null = one line for each, as JSON or as words. */
		EventLines(BodyOutput* body, bool asJson);

	private:
		std::optional<EventTap> tap;
	};
} // namespace Program
