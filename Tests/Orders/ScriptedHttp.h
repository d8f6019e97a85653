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
			Silent // until somebody cancels
		};

		int code = 200;
		std::vector<std::pair<std::string, std::string>> headers;
		std::vector<std::string> blocks;
		End end = End::Whole;
	};

	/** Is asked for each request that is sent. @param verb, path  as sent. @param range  the value of that header. */
	using Server = std::function<Answer(const std::string& verb, const std::string& path, const std::string& range)>;

	/** Who answers from now on. */
	void serveWith(Server server);
	/** Requests that were taken since then. */
	int requestsTaken();
} // namespace Orders
