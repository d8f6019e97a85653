#include "Origin.h"

#include "Schedule.h"

#include <algorithm>

namespace
{
	const Answer eventStream{
		200, {{"Content-Type", "text/event-stream"}}, {eventContent.substr(0, 15), eventContent.substr(15, 8), eventContent.substr(23)}};
	const Answer page{200, {{"Content-Type", "text/html"}}, {"<a href=\"/uc?id=1&amp;", "x;confirm=t&amp;\">go on</a>"}};
	const Answer information = [] // the name is field 1 of a list, and the size field 27
	{
		std::string list = "itemJson:[0,\"name\"";
		for (int field = 2; field < 27; ++field)
		{
			list += ",0";
		}
		return Answer{200, {}, {list, ",12]"}};
	}();
} // namespace

Answer Origin::answer(const Asked& asked)
{
	paths.push_back(asked.path);
	Schedule::the().expect(traffic.running <= mostAtOnce, "more requests at once than may be");
	if (asked.isWhole)
	{
		bodies.push_back(asked.body);
	}
	if (asked.path.starts_with("/tus"))
	{
		return resumable(asked);
	}
	const bool isLate = traffic.taken > 2;
	const bool isPage = asked.path.starts_with("/uc") && asked.path.find("confirm=") == std::string::npos;
	Answer answer = asked.path == "/events"            ? (isLate ? Answer{204} : eventStream)
					: asked.path.starts_with("/file/") ? information
					: isPage                           ? page
					: asked.verb == "GET"              ? file(asked)
													   : Answer{200, {}, {"taken"}};
	answer.end = chooseEnd(asked.verb != "GET");
	if (answer.end == Answer::End::Dropped && !answer.blocks.empty())
	{
		answer.blocks.pop_back();
	}
	return answer;
}

Answer::End Origin::chooseEnd(bool hasBody) const
{
	using End = Answer::End;
	const std::vector<End> ends = isBrief   ? std::vector{End::Whole, other}
								  : hasBody ? std::vector{End::Whole, End::Dropped, End::Silent}
											: std::vector{End::Whole, End::Dropped, End::Silent, End::NoConnection};
	const int options = isBrief && other == End::Whole ? 1 : static_cast<int>(ends.size());
	const bool isOpen = traffic.taken <= (isBrief ? 1 : 2);
	return isOpen ? ends[static_cast<std::size_t>(Schedule::the().choose("the server's answer ends", options))] : End::Whole;
}

/** Ranges, a validator, pieces of four bytes. */
Answer Origin::file(const Asked& asked) const
{
	const std::string& range = asked.range;
	const std::size_t from = range.empty() ? 0 : std::stoul(range.substr(6));
	const std::size_t dash = range.find('-');
	const bool hasEnd = !range.empty() && dash + 1 < range.size();
	const std::size_t until = hasEnd ? std::min(fileContent.size(), std::stoul(range.substr(dash + 1)) + 1) : fileContent.size();
	if (from >= fileContent.size())
	{
		return {416};
	}
	Answer answer{range.empty() ? 200 : 206, {{"ETag", "\"one\""}, {"Content-Length", std::to_string(until - from)}}};
	if (!range.empty())
	{
		answer.headers.emplace_back(
			"Content-Range", "bytes " + std::to_string(from) + '-' + std::to_string(until - 1) + '/' + std::to_string(fileContent.size()));
	}
	const std::size_t piece = isBrief ? fileContent.size() : 4;
	for (std::size_t at = from; at < until; at += piece)
	{
		answer.blocks.push_back(fileContent.substr(at, std::min(piece, until - at)));
	}
	return answer;
}

/** Keeps what has come of a piece, also of one that breaks off. */
Answer Origin::resumable(const Asked& asked)
{
	Answer answer{asked.verb == "HEAD" ? 200 : 204};
	if (asked.verb == "PATCH" && asked.offset != std::to_string(stored.size()))
	{
		answer.code = 409;
	}
	else if (asked.verb == "PATCH")
	{
		stored += asked.body;
	}
	else if (asked.verb == "POST")
	{
		stored.clear();
		answer.code = 201;
		answer.headers = {{"Location", "/tus/1"}};
	}
	answer.headers.emplace_back("Upload-Offset", std::to_string(stored.size()));
	answer.end = chooseEnd(true);
	return answer;
}

bool Origin::has(const std::string& bytes) const
{
	return std::ranges::any_of(bodies, [&](const std::string& body) { return body.find(bytes) != std::string::npos; });
}
