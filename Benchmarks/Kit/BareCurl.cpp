#include "Kit/BareCurl.h"

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

namespace
{
	// A condition may depend on more than transfers, so it is asked again after this time even when nothing came.
	constexpr int longestWaitMilliseconds = 10;

	void check(CURLMcode code)
	{
		if (code != CURLM_OK)
		{
			throw std::runtime_error(curl_multi_strerror(code));
		}
	}

	void requireOk(CURL* easy, CURLcode result)
	{
		long status = 0;
		curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
		if (result != CURLE_OK || status != 200)
		{
			throw std::runtime_error(fmt::format("bare libcurl: {}, status {}", curl_easy_strerror(result), status));
		}
	}
} // namespace

BareCurl::BareCurl(const std::string& url, int inFlight)
	: multi(curl_multi_init())
{
	// One connection for each handle is kept, like on the other side.
	check(curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, static_cast<long>(inFlight)));
	for (int number = 0; number < inFlight; ++number)
	{
		Handle& handle = *handles.emplace_back(std::make_unique<Handle>());
		handle.easy = curl_easy_init();
		curl_easy_setopt(handle.easy, CURLOPT_URL, url.c_str());
		curl_easy_setopt(handle.easy, CURLOPT_NOSIGNAL, 1L);
		curl_easy_setopt(handle.easy, CURLOPT_WRITEFUNCTION, onBytes);
		curl_easy_setopt(handle.easy, CURLOPT_WRITEDATA, static_cast<void*>(&handle));
		curl_easy_setopt(handle.easy, CURLOPT_PRIVATE, static_cast<void*>(&handle));
	}
}

BareCurl::~BareCurl()
{
	for (const std::unique_ptr<Handle>& handle : handles)
	{
		curl_multi_remove_handle(multi, handle->easy);
		curl_easy_cleanup(handle->easy);
	}
	curl_multi_cleanup(multi);
}

void BareCurl::addHeaders(const std::vector<std::string>& lines)
{
	for (const std::string& line : lines)
	{
		curl_slist* const grown = curl_slist_append(headers.release(), line.c_str());
		headers.reset(grown);
	}
	for (const std::unique_ptr<Handle>& handle : handles)
	{
		curl_easy_setopt(handle->easy, CURLOPT_HTTPHEADER, headers.get());
	}
}

std::size_t BareCurl::onBytes(char* bytes, std::size_t, std::size_t number, void* data)
{
	Handle& handle = *static_cast<Handle*>(data);
	if (handle.sink)
	{
		(*handle.sink)({bytes, number});
	}
	else
	{
		handle.body.append(bytes, number);
	}
	return number;
}

void BareCurl::start(Handle& handle)
{
	handle.body.clear();
	check(curl_multi_add_handle(multi, handle.easy));
	++running;
}

void BareCurl::turn(const std::function<void(Handle&, CURLcode)>& ended)
{
	int ignored = 0;
	bool hasEnded = false;
	check(curl_multi_perform(multi, &ignored));
	while (const CURLMsg* message = curl_multi_info_read(multi, &ignored))
	{
		Handle* handle = nullptr;
		const CURLcode result = message->data.result; // the message goes with the handle
		curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &handle);
		check(curl_multi_remove_handle(multi, handle->easy));
		--running;
		hasEnded = true;
		ended(*handle, result);
	}
	if (running > 0 && !hasEnded) // what was just started need not be waited for
	{
		check(curl_multi_poll(multi, nullptr, 0, longestWaitMilliseconds, nullptr));
	}
}

void BareCurl::fetch(int requests, std::string_view expectedBody)
{
	int left = requests;
	for (std::size_t number = 0; number < handles.size() && left > 0; ++number, --left)
	{
		start(*handles[number]);
	}
	while (running > 0)
	{
		turn(
			[&](Handle& handle, CURLcode result)
			{
				requireOk(handle.easy, result);
				if (handle.body != expectedBody)
				{
					throw std::runtime_error("bare libcurl: another body than expected");
				}
				if (left > 0)
				{
					--left;
					start(handle);
				}
			});
	}
}

void BareCurl::stream(const Sink& sink)
{
	Handle& handle = *handles.front();
	handle.sink = &sink;
	start(handle);
	while (running > 0)
	{
		turn([](const Handle& ended, CURLcode result) { requireOk(ended.easy, result); });
	}
	handle.sink = nullptr;
}

void BareCurl::startAll()
{
	for (const std::unique_ptr<Handle>& handle : handles)
	{
		start(*handle);
	}
}

void BareCurl::runUntil(const std::function<bool()>& condition)
{
	while (running > 0 && !condition())
	{
		turn([](const Handle&, CURLcode) {});
	}
}
