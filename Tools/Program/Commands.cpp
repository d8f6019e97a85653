#include "Commands.h"

#include "CorvaneBPLibrary.h"

#include <fmt/core.h>

int Program::runToEnd(FGameLoop& loop, const std::string& path, const std::vector<std::string>& arguments)
{
	Script::ScriptState script({[&loop] { loop.Tick(); },
		[&loop](const std::function<bool()>& condition, double seconds) { return loop.WaitFor(condition, seconds); }});
	if (script.runFile(path, arguments))
	{
		loop.RunUntilIdle(UCorvaneBPLibrary::hasPendingWork, [&script] { return script.hasEnded(); });
	}
	std::fflush(stdout); // before the error, so that the two stand in order where both go to one place
	if (!script.error().empty())
	{
		fmt::print(stderr, "corvane: {}\n", script.error());
	}
	return script.exitStatus();
}
