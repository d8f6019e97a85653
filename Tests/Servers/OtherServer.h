#pragma once

#include "ChildProgram.h"

#include <string>
#include <vector>

/** A server of another maker on a free port of the loopback interface. It goes with this object, and never outlives its thread. */
class OtherServer
{
public:
	/** Throws, with a word on what to do, when it does not come up. @param words  the program and its arguments. */
	explicit OtherServer(std::vector<std::string> words);
	~OtherServer();

	/** @param path  begins with '/'. */
	std::string url(const std::string& path = "/") const { return "http://127.0.0.1:" + port + path; }

private:
	std::string readPort();

	int output = -1; // of the server, to read from
	std::string port;
	ChildProgram program;
};
