#pragma once

#include <curl/curl.h>

#include <string>
#include <string_view>
#include <vector>

/** What a client asks for. */
struct Ask
{
	std::vector<std::string> headers = {};
	std::string method = {}; // empty = GET, or POST with a body
	std::string body = {};
	bool unpacks = false; // compressed answers
	bool follows = false; // redirects, ten at most
	std::string trusts = {}; // a PEM text
};

/** What it got. */
struct Got
{
	CURLcode error = CURLE_OK;
	long status = 0;
	std::string head; // of the last answer
	std::string body;
	double seconds = 0;
};

/** Asks with an ordinary client, over a connection of its own. */
Got ask(const std::string& url, const Ask& what = {});

/** Sends these bytes. @return all that comes until the peer closes; "reset" behind it, if that was an error. */
std::string converse(int port, std::string_view bytes);
