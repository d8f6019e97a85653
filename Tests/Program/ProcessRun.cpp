#include "ProcessRun.h"

#include <gtest/gtest.h>

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

RunningProcess::RunningProcess(const std::vector<std::string>& words)
{
	const std::string root = directory.path();
	directory.write("out", ""); // there from the beginning
	directory.write("err", "");
	const char* const redirect = R"(exec > "$0/out" 2> "$0/err" < /dev/null; exec "$@")";
	std::vector<const char*> pointers{"/bin/sh", "-c", redirect, root.c_str()};
	for (const std::string& word : words)
	{
		pointers.push_back(word.c_str());
	}
	pointers.push_back(nullptr);
	// Whatever runs the tests may ignore these, as a shell does for what it runs in the background.
	sigset_t endings;
	sigemptyset(&endings);
	for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP})
	{
		sigaddset(&endings, signal);
	}
	posix_spawnattr_t attributes;
	posix_spawnattr_init(&attributes);
	posix_spawnattr_setsigdefault(&attributes, &endings);
	posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
	EXPECT_EQ(posix_spawn(&process, "/bin/sh", nullptr, &attributes, const_cast<char**>(pointers.data()), environ), 0);
	posix_spawnattr_destroy(&attributes);
}

void RunningProcess::send(int signal) const
{
	if (process != 0)
	{
		kill(process, signal);
	}
}

/** @return false when it still runs. */
bool RunningProcess::collect(int options)
{
	if (process != 0 && waitpid(process, &status, options) == process)
	{
		process = 0;
	}
	return process == 0;
}

bool RunningProcess::hasEnded()
{
	return collect(WNOHANG);
}

ProcessRun RunningProcess::end(int signal)
{
	send(signal);
	EXPECT_TRUE(collect(0));
	return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), out(), err()};
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
