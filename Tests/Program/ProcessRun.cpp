#include "ProcessRun.h"

#include "TempDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace
{
	int statusOf(pid_t process)
	{
		int status = 0;
		EXPECT_EQ(waitpid(process, &status, 0), process);
		return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
	}

	/** @param out, err  files for what it prints. */
	pid_t start(const std::vector<std::string>& words, const std::string& out, const std::string& err)
	{
		std::vector<char*> pointers;
		for (const std::string& word : words)
		{
			pointers.push_back(const_cast<char*>(word.c_str()));
		}
		pointers.push_back(nullptr);

		posix_spawn_file_actions_t actions;
		posix_spawn_file_actions_init(&actions);
		posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
		posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
		posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
		pid_t process = 0;
		EXPECT_EQ(posix_spawn(&process, pointers.front(), &actions, nullptr, pointers.data(), environ), 0);
		posix_spawn_file_actions_destroy(&actions);
		return process;
	}

	std::vector<std::string> programWith(const std::vector<std::string>& arguments)
	{
		std::vector<std::string> words{CORVANE_PROGRAM};
		words.insert(words.end(), arguments.begin(), arguments.end());
		return words;
	}
} // namespace

ProcessRun runProcess(const std::vector<std::string>& words)
{
	const TempDir directory;
	const int status = statusOf(start(words, directory.path("out"), directory.path("err")));
	return {status, directory.read("out"), directory.read("err")};
}

ProcessRun runProgram(const std::vector<std::string>& arguments)
{
	return runProcess(programWith(arguments));
}

RunningProgram::RunningProgram(const std::vector<std::string>& arguments)
	: process(start(programWith(arguments), "/dev/null", "/dev/null"))
{
}

void RunningProgram::kill()
{
	if (const pid_t running = std::exchange(process, 0))
	{
		::kill(running, SIGKILL);
		EXPECT_EQ(statusOf(running), 128 + SIGKILL);
	}
}
