#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

/** What a server answers, and how it ends. */
struct Answer
{
	enum class End
	{
		Whole,
		Dropped,
		NoConnection, // nothing comes
		Silent // until somebody cancels, or patience ends
	};

	int code = 200;
	std::vector<std::pair<std::string, std::string>> headers = {};
	std::vector<std::string> blocks = {};
	End end = End::Whole;
};

/** What a request asks for. */
struct Asked
{
	std::string verb;
	std::string path;
	std::string range; // as the next, the value of a header
	std::string offset;
	std::string body = {};
	/** Of the body; where it breaks off nobody hears the answer. */
	bool isWhole = true;
};

/** Is asked for each request, behind its body. */
using Server = std::function<Answer(const Asked& asked)>;

/** Of one run. */
struct Traffic
{
	Server server;
	bool mayBreak = false; // the connections of the first two, before or amid their bodies
	int taken = 0;
	int started = 0; // somebody wanted to have them sent; but for those that take something back (DELETE)
	std::size_t running = 0; // of those that were taken
};
inline Traffic traffic;
