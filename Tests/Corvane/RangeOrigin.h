#pragma once

#include "RandomBytes.h"
#include "RawServer.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/** What a request asks for. */
struct RangeRequest
{
	std::string head;
	/** Counts the requests of one origin from 0. */
	int number = 0;
	/** The Range header as it came, empty when there is none. */
	std::string range;
	std::int64_t first = 0;
	std::optional<std::int64_t> last = {};
};

/** An origin that hands each request to a function, so that a test says only what is special about its answers. */
class RangeOrigin
{
public:
	using Answer = std::function<void(Connection& connection, const RangeRequest& request)>;

	explicit RangeOrigin(Answer answer);
	std::string url(std::string_view path = "/file") const { return server.url(path); }
	/** The Range headers so far. Thread: any. */
	std::vector<std::string> ranges() const;

private:
	RawServer server;
};

/** @return the part that a request asks for, as 206, or all of it as 200. @param headers  lines with their line ends. */
std::string rangedAnswer(const std::string& content, const RangeRequest& request, std::string_view headers = "");
/** @return a 206 with a Content-Range of one's own. */
std::string partAnswer(std::string_view contentRange, std::string_view body, std::string_view headers = "");
/** Sends an answer but for its last bytes, and closes. */
void sendWithoutEnd(Connection& connection, const std::string& answer, std::size_t missing);
