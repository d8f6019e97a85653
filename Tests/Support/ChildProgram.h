#pragma once

#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

/** A program of its own, which goes with this object. One thread waits for it, any may kill it. */
class ChildProgram
{
public:
	ChildProgram() = default;
	~ChildProgram();
	ChildProgram(const ChildProgram&) = delete;
	ChildProgram& operator=(const ChildProgram&) = delete;

	/** @param words  the program and its arguments. @param output  a descriptor for all that it says; -1 = where this one's goes. */
	void start(std::vector<std::string> words, int output = -1);
	/** @return the status with which it ended; -1 = it was killed. */
	int wait();
	void kill();

private:
	std::mutex mutex; // guards what follows
	pid_t running = 0;
};
