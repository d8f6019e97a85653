#pragma once

#include <curl/curl.h>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/**
 * The least that a program can do to fetch with libcurl: one thread, one multi handle, easy handles that are used again
 * and again. Thread: one at a time.
 */
class BareCurl
{
public:
	/** Takes each piece of a body as it arrives. */
	using Sink = std::function<void(std::string_view bytes)>;

	/** @param inFlight  easy handles, each of which asks for url. */
	BareCurl(const std::string& url, int inFlight);
	~BareCurl();
	BareCurl(const BareCurl&) = delete;
	BareCurl& operator=(const BareCurl&) = delete;

	/** Each request has these header lines, too. Comes before the first. */
	void addHeaders(const std::vector<std::string>& lines);

	/** Fetches the URL so many times. Throws std::runtime_error unless every body is as expected. */
	void fetch(int requests, std::string_view expectedBody);
	/** Fetches it once; the body goes to sink alone. Throws std::runtime_error when that fails. */
	void stream(const Sink& sink);

	/** Starts one request on every handle. */
	void startAll();
	/** Lets the transfers go on until they have all ended, well or not, or until the condition holds. */
	void runUntil(const std::function<bool()>& condition);

private:
	struct Handle
	{
		CURL* easy = nullptr;
		std::string body;
		const Sink* sink = nullptr;
	};

	static std::size_t onBytes(char* bytes, std::size_t, std::size_t number, void* handle);
	void start(Handle& handle);
	/** Waits for the next things to happen and hands each ended transfer on. */
	void turn(const std::function<void(Handle& handle, CURLcode result)>& ended);

	CURLM* const multi;
	std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers{nullptr, &curl_slist_free_all};
	std::vector<std::unique_ptr<Handle>> handles;
	int running = 0;
};
