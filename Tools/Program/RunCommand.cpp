#include "Commands.h"

#include <filesystem>

int Program::runScript(const Settings& settings, const std::string& path, const std::vector<std::string>& arguments)
{
	if (!std::filesystem::exists(path) || std::filesystem::is_directory(path))
	{
		throw UsageError("there is no script " + path);
	}
	ProgramLoop loop(settings);
	return runToEnd(loop, path, arguments);
}
