#include "RangeOrigin.h"

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstdio>

namespace
{
	RangeRequest read(const std::string& head)
	{
		RangeRequest request{head, 0, headerOf(head, "Range")};
		std::int64_t last = 0;
		if (std::sscanf(request.range.c_str(), "bytes=%" SCNd64 "-%" SCNd64, &request.first, &last) == 2)
		{
			request.last = last;
		}
		return request;
	}
} // namespace

RangeOrigin::RangeOrigin(Answer answer)
	: server(
		  [answer, next = std::make_shared<std::atomic<int>>(0)](Connection& connection)
		  {
			  for (;;)
			  {
				  RangeRequest request = read(connection.readHead());
				  request.number = (*next)++;
				  answer(connection, request);
			  }
		  })
{
}

std::vector<std::string> RangeOrigin::ranges() const
{
	std::vector<std::string> ranges;
	for (const std::string& head : server.requests())
	{
		ranges.push_back(headerOf(head, "Range"));
	}
	return ranges;
}

std::string rangedAnswer(const std::string& content, const RangeRequest& request, std::string_view headers)
{
	const auto size = static_cast<std::int64_t>(content.size());
	if (request.range.empty())
	{
		return answer(200, content, headers);
	}
	if (request.first >= size)
	{
		return answer(416, "beyond the end", "Content-Range: bytes */" + std::to_string(size) + "\r\n");
	}
	const std::int64_t last = std::min(request.last.value_or(size - 1), size - 1);
	return partAnswer("bytes " + std::to_string(request.first) + "-" + std::to_string(last) + "/" + std::to_string(size),
		content.substr(static_cast<size_t>(request.first), static_cast<size_t>(last - request.first + 1)), headers);
}

std::string partAnswer(std::string_view contentRange, std::string_view body, std::string_view headers)
{
	return answer(206, body, "Content-Range: " + std::string(contentRange) + "\r\n" + std::string(headers));
}

void sendWithoutEnd(Connection& connection, const std::string& answer, std::size_t missing)
{
	connection.send(answer.substr(0, answer.size() - missing));
	connection.closeWrite();
	connection.waitForPeer();
}
