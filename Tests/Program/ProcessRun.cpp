#include "ProcessRun.h"

#include <gtest/gtest.h>

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

RunningProcess::RunningProcess(const std::vector<std::string>& words)
{
	const std::string root = directory.path();
	const char* const redirect = R"(exec > "$0/out" 2> "$0/err" < /dev/null; exec "$@")";
	std::vector<const char*> pointers{"/bin/sh", "-c", redirect, root.c_str()};
	for (const std::string& word : words)
	{
		pointers.push_back(word.c_str());
	}
	pointers.push_back(nullptr);
	EXPECT_EQ(posix_spawn(&process, "/bin/sh", nullptr, nullptr, const_cast<char**>(pointers.data()), environ), 0);
}

ProcessRun RunningProcess::end(int signal)
{
	if (const pid_t running = std::exchange(process, 0))
	{
		kill(running, signal);
		EXPECT_EQ(waitpid(running, &status, 0), running);
	}
	return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), directory.read("out"), directory.read("err")};
}

ProcessRun runProcess(const std::vector<std::string>& words)
{
	return RunningProcess(words).end(0);
}

ProcessRun runProgram(std::vector<std::string> arguments)
{
	arguments.insert(arguments.begin(), CORVANE_PROGRAM);
	return runProcess(arguments);
}
