#pragma once

#include "Containers/StringConv.h"
#include "Host/Log.h"

#include <algorithm>
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

	LogCapture()
	{
		HostLog::SetSink(
			[this](const char* category, ELogVerbosity::Type verbosity, const FString& text)
			{
				const std::scoped_lock lock(Mutex);
				Lines.push_back({category, verbosity, FTCHARToUTF8(*text, text.Len()).Get()});
			});
	}
	~LogCapture() { HostLog::SetSink({}); }
	LogCapture(const LogCapture&) = delete;
	LogCapture& operator=(const LogCapture&) = delete;

	std::vector<Line> lines() const
	{
		const std::scoped_lock lock(Mutex);
		return Lines;
	}
	/** @return how many lines of this category and verbosity hold the part. */
	int count(std::string_view category, ELogVerbosity::Type verbosity, std::string_view part = "") const
	{
		const std::scoped_lock lock(Mutex);
		return static_cast<int>(std::count_if(Lines.begin(), Lines.end(),
			[=](const Line& line)
			{ return line.category == category && line.verbosity == verbosity && line.text.find(part) != std::string::npos; }));
	}

private:
	mutable std::mutex Mutex; // guards what follows
	std::vector<Line> Lines;
};
