#pragma once

#include "Host/Log.h"

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

/** Keeps the log lines of its scope instead of showing them. One at a time. Thread: any. */
class LogCapture
{
public:
	struct Line
	{
		std::string category;
		ELogVerbosity::Type verbosity;
		std::string text; // UTF-8
	};

	LogCapture();
	~LogCapture();
	LogCapture(const LogCapture&) = delete;
	LogCapture& operator=(const LogCapture&) = delete;

	std::vector<Line> lines() const;
	/** @return how many lines of this category and verbosity hold the part. */
	int count(std::string_view category, ELogVerbosity::Type verbosity, std::string_view part = "") const;

private:
	mutable std::mutex Mutex;
	std::vector<Line> Lines;
};
