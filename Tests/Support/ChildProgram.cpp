#include "ChildProgram.h"

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

ChildProgram::~ChildProgram()
{
	if (running != 0)
	{
		kill();
		wait();
	}
}

void ChildProgram::start(std::vector<std::string> words, int output)
{
	std::vector<char*> arguments;
	for (std::string& word : words)
	{
		arguments.push_back(word.data());
	}
	arguments.push_back(nullptr);
	posix_spawn_file_actions_t actions;
	posix_spawn_file_actions_init(&actions);
	for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
	{
		if (output >= 0)
		{
			posix_spawn_file_actions_adddup2(&actions, output, stream);
		}
	}
	const std::scoped_lock lock(mutex);
	const int fault = posix_spawnp(&running, arguments[0], &actions, nullptr, arguments.data(), environ);
	posix_spawn_file_actions_destroy(&actions);
	if (fault != 0)
	{
		throw std::system_error(fault, std::generic_category(), words[0]);
	}
}

int ChildProgram::wait()
{
	siginfo_t ended;
	waitid(P_PID, static_cast<id_t>(running), &ended, WEXITED | WNOWAIT); // killing goes on being possible meanwhile
	const std::scoped_lock lock(mutex);
	int status = 0;
	waitpid(std::exchange(running, 0), &status, 0);
	return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void ChildProgram::kill()
{
	const std::scoped_lock lock(mutex);
	if (running != 0)
	{
		::kill(running, SIGKILL);
	}
}
