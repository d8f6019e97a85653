#pragma once

#include "Lab/Plans/Behaviour.h"

#include <optional>
#include <string>
#include <vector>

namespace Lab
{
	Behaviour text(std::string text, const std::string& type = "text/plain; charset=utf-8");

	struct StatusOptions
	{
		int code = 200;
		std::string reason = {}; // empty = the usual one
		std::string retryAfter = {}; // seconds, or a date; empty = not told
		std::optional<std::string> text = {}; // the body; without it, that of an earlier behaviour stays
	};
	Behaviour status(StatusOptions options);

	struct RedirectOptions
	{
		std::string to = "/"; // where the last one leads
		int code = 302;
		int hops = 1; // redirects on the way; all but the last lead back to the same path, with another query
		bool loops = false; // leads to itself for ever
		std::string host = {}; // "localhost" or "localhost:8000", for the last one; empty = the same
	};
	Behaviour redirect(RedirectOptions options);

	enum class Echo
	{
		Body, // with its type
		Head // the request's lines
	};
	/** Sends back what came. */
	Behaviour echo(Echo what = Echo::Body);

	struct ServerEvent
	{
		std::string data;
		std::string event = {}; // its kind; empty = none
	};

	struct EventsOptions
	{
		std::vector<ServerEvent> list = {}; // empty = "message 1", "message 2", ...
		int number = 3; // of those; 0 = without end
		Milliseconds pause = {}; // from one to the next
		bool hasIds = false; // 1, 2, ...; then a client that names the last one gets what follows
		std::optional<int> retryMilliseconds = {}; // what the client shall wait before it comes back
		int cutsAfter = 0; // events of one answer; 0 = it ends with the list
	};
	/** A stream of server-sent events. */
	Behaviour events(EventsOptions options = {});
	/** A stream that is made while it goes out, one piece after each pause. @param makeSource  called for each request. */
	Behaviour stream(
		std::function<PieceSource(const Request&)> makeSource, Milliseconds pause = {}, const std::string& type = "text/plain");

	/** These bytes and no others, in place of an answer. */
	Behaviour raw(RawAnswer answer);
	inline Behaviour raw(std::string bytes, RawEnd end = RawEnd::Close)
	{
		return raw(RawAnswer{{{{}, std::move(bytes)}}, end});
	}
} // namespace Lab
