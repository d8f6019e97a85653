#pragma once

#include "Logging/LogMacros.h"

#include <functional>

namespace HostLog
{
	using FSink = std::function<void(const char* Category, ELogVerbosity::Type Verbosity, const FString& Line)>;

	/**
	 * Sends log lines elsewhere than to standard error ("LogTemp: Error: text").
	 * @param Sink  called for one line at a time, on whatever thread logs; empty = standard error again.
	 * @note Thread: any.
	 */
	void SetSink(FSink Sink);

	/** "Error", "Warning" or "Display". */
	const char* VerbosityName(ELogVerbosity::Type Verbosity);
} // namespace HostLog
