#include "LogCapture.h"

#include "Containers/StringConv.h"

#include <algorithm>

LogCapture::LogCapture()
{
	HostLog::SetSink(
		[this](const char* category, ELogVerbosity::Type verbosity, const FString& text)
		{
			const std::scoped_lock lock(Mutex);
			Lines.push_back({category, verbosity, FTCHARToUTF8(*text, text.Len()).Get()});
		});
}

LogCapture::~LogCapture()
{
	HostLog::SetSink({});
}

std::vector<LogCapture::Line> LogCapture::lines() const
{
	const std::scoped_lock lock(Mutex);
	return Lines;
}

int LogCapture::count(std::string_view category, ELogVerbosity::Type verbosity, std::string_view part) const
{
	const std::scoped_lock lock(Mutex);
	return static_cast<int>(std::count_if(Lines.begin(), Lines.end(),
		[=](const Line& line)
		{ return line.category == category && line.verbosity == verbosity && line.text.find(part) != std::string::npos; }));
}
