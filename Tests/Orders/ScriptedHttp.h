#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Orders
{
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
		std::vector<std::pair<std::string, std::string>> headers;
		std::vector<std::string> blocks;
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

	/** Who answers from now on. @param mayBreak  the connections of the first two may break before or amid their bodies. */
	void serveWith(Server server, bool mayBreak);
	/** Requests that were taken since then. */
	int requestsTaken();
	/** Requests that somebody wanted to have sent since then, but for those that take something back (DELETE). */
	int requestsStarted();
	/** Of those that were taken, the ones that have not ended. */
	std::size_t requestsRunning();
} // namespace Orders
