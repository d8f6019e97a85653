#include "Commands.h"
#include "Console.h"
#include "EndSignals.h"
#include "InputError.h"
#include "ScriptState.h"

#include <fmt/core.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace Program
{
	int runToEnd(ProgramLoop& loop, const std::string& path, const std::vector<std::string>& arguments)
	{
		Script::ScriptState script({[&loop] { loop.Tick(); },
			[&loop](const std::function<bool()>& condition, double seconds) { return loop.WaitFor(condition, seconds); }, printLine,
			[] { return EndSignals::asked() != 0; }});
		if (script.runFile(path, arguments))
		{
			loop.runToIdle([&script] { return script.hasEnded(); });
		}
		std::fflush(stdout); // before the error, so that the two stand in order where both go to one place
		if (!script.error().empty())
		{
			complain("corvane: " + script.error());
		}
		for (const std::string& warning : script.warnings())
		{
			complain("corvane: warning: " + warning);
		}
		return script.exitStatus();
	}

	int runScript(const Settings& settings, const std::string& path, const std::vector<std::string>& arguments)
	{
		const bool isReadable = access(path.c_str(), R_OK) == 0;
		if (!isReadable || std::filesystem::is_directory(path))
		{
			throw Reflect::InputError(fmt::format("cannot run '{}': {}", path, std::strerror(isReadable ? EISDIR : errno)));
		}
		ProgramLoop loop(settings);
		return runToEnd(loop, path, arguments);
	}
} // namespace Program
