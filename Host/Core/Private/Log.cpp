#include "Host/Log.h"

#include "Containers/StringConv.h"

#include <fmt/core.h>
#include <mutex>

namespace
{
	struct FLog
	{
		std::mutex Mutex; // held while a line is written, so that lines never mix
		HostLog::FSink Sink;
	};

	FLog& theLog()
	{
		static FLog Log;
		return Log;
	}
} // namespace

void HostLog::SetSink(FSink Sink)
{
	const std::scoped_lock Lock(theLog().Mutex);
	theLog().Sink = std::move(Sink);
}

const char* HostLog::VerbosityName(ELogVerbosity::Type Verbosity)
{
	static constexpr const char* names[] = {"Error", "Warning", "Display"};
	return names[Verbosity];
}

void LogPrivate::Write(const char* Category, ELogVerbosity::Type Verbosity, const FString& Line)
{
	const std::scoped_lock Lock(theLog().Mutex);
	if (theLog().Sink)
	{
		theLog().Sink(Category, Verbosity, Line);
		return;
	}
	fmt::print(stderr, "{}: {}: {}\n", Category, HostLog::VerbosityName(Verbosity), FTCHARToUTF8(*Line, Line.Len()).Get());
}
