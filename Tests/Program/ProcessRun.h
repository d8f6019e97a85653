#pragma once

#include <string>
#include <vector>

/** What one run of the program left behind. */
struct ProcessRun
{
	int status; // exit status; 128 + signal when a signal ended it
	std::string out;
	std::string err;
};

/** Runs a command to its end, with nothing on its standard input. @param words  the absolute path of a program and its arguments. */
ProcessRun runProcess(const std::vector<std::string>& words);

/** Runs the program of this project. */
ProcessRun runProgram(const std::vector<std::string>& arguments);

/** A run of the program of this project that the test ends; what it prints is dropped. */
class RunningProgram
{
public:
	explicit RunningProgram(const std::vector<std::string>& arguments);
	/** Ends it like a crash, if it still runs. */
	~RunningProgram() { kill(); }
	RunningProgram(const RunningProgram&) = delete;
	RunningProgram& operator=(const RunningProgram&) = delete;

	/** Sends SIGKILL and waits for the end. */
	void kill();

private:
	int process; // 0 = has ended
};
