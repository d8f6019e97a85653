#pragma once

#include "TempDir.h"

#include <string>
#include <vector>

/** What one run of the program left behind. */
struct ProcessRun
{
	int status; // exit status; 128 + signal when a signal ended it
	std::string out;
	std::string err;
};

/** A run of a command, with nothing on its standard input. It ends with this object at the latest. */
class RunningProcess
{
public:
	/** @param words  the absolute path of a program and its arguments. */
	explicit RunningProcess(const std::vector<std::string>& words);
	~RunningProcess() { end(); }
	RunningProcess(const RunningProcess&) = delete;
	RunningProcess& operator=(const RunningProcess&) = delete;

	/** Does nothing to a process that has ended. */
	void send(int signal) const;
	/** @return what it has written so far. */
	std::string out() const { return directory.read("out"); }
	std::string err() const { return directory.read("err"); }
	bool hasEnded();
	/** Ends it with a signal, unless that is 0, and waits for the end. */
	ProcessRun end(int signal = 9);

private:
	bool collect(int options);

	const TempDir directory;
	int process = 0; // 0 = has ended
	int status = 0;
};

/** Runs a command to its end. */
ProcessRun runProcess(const std::vector<std::string>& words);

/** Runs the program of this project to its end. */
ProcessRun runProgram(std::vector<std::string> arguments);
