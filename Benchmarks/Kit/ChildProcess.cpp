#include "Kit/ChildProcess.h"

#include "Kit/ProcessFigures.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
	pid_t start(const std::vector<std::string>& words, const std::string& outputFile)
	{
		std::vector<char*> arguments;
		for (const std::string& word : words)
		{
			arguments.push_back(const_cast<char*>(word.c_str())); // they are not changed
		}
		arguments.push_back(nullptr);
		posix_spawn_file_actions_t actions;
		posix_spawn_file_actions_init(&actions);
		posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
		pid_t child = 0;
		const int error = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
		posix_spawn_file_actions_destroy(&actions);
		if (error != 0)
		{
			throw std::runtime_error(words[0] + " cannot be started");
		}
		return child;
	}
} // namespace

Figures ChildProcess::run(const std::vector<std::string>& words, const std::string& outputFile)
{
	// Until it is another program a child lives in this one's memory, whose peak would count as its own.
	ProcessFigures::forgetPeak();
	const StopWatch watch;
	const pid_t child = start(words, outputFile);
	int status = 0;
	rusage usage{};
	if (wait4(child, &status, 0, &usage) != child || status != 0)
	{
		throw std::runtime_error(fmt::format("{} failed", fmt::join(words, " ")));
	}
	const double kibibytes = static_cast<double>(usage.ru_maxrss);
	return {{"time", "s", watch.seconds()}, {"CPU", "s", ProcessFigures::cpuSeconds(usage)}, {"peak memory", "MiB", kibibytes / 1024}};
}
