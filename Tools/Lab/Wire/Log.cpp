#include "Lab/Wire/Log.h"

#include <nlohmann/json.hpp>

namespace Lab
{
	namespace
	{
		constexpr std::size_t mostEntries = 20'000;

		nlohmann::json headersOf(const Request& request)
		{
			nlohmann::json headers = nlohmann::json::object();
			for (const Header& header : request.headers)
			{
				nlohmann::json& value = headers[header.name];
				value = value.is_null() ? header.value : value.get<std::string>() + ", " + header.value;
			}
			return headers;
		}

		double millisecondsBetween(Clock::time_point from, Clock::time_point to)
		{
			return static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(to - from).count()) / 1000;
		}
	} // namespace

	Log::Entry Log::begin(std::shared_ptr<const Request> request, int status)
	{
		const Entry entry = std::make_shared<Exchange>();
		entry->request = std::move(request);
		entry->received = Clock::now();
		entry->status = status;
		const std::scoped_lock lock(mutex);
		++numRunning;
		if (keeps)
		{
			entries.push_back(entry);
		}
		if (entries.size() > mostEntries)
		{
			entries.pop_front();
		}
		return entry;
	}

	void Log::addSent(const Entry& entry, std::size_t bytes)
	{
		const std::scoped_lock lock(mutex);
		entry->sentBytes += bytes;
	}

	void Log::end(const Entry& entry, const char* how)
	{
		const std::scoped_lock lock(mutex);
		--numRunning;
		entry->end = how;
		entry->ended = Clock::now();
	}

	void Log::clear()
	{
		const std::scoped_lock lock(mutex);
		entries.clear();
	}

	std::vector<Exchange> Log::exchanges() const
	{
		const std::scoped_lock lock(mutex);
		std::vector<Exchange> copies;
		for (const Entry& entry : entries)
		{
			copies.push_back(*entry);
		}
		return copies;
	}

	int Log::running() const
	{
		const std::scoped_lock lock(mutex);
		return numRunning;
	}

	nlohmann::json toJson(const std::vector<Exchange>& exchanges)
	{
		nlohmann::json list = nlohmann::json::array();
		for (const Exchange& exchange : exchanges)
		{
			const Request& request = *exchange.request;
			nlohmann::json entry{{"number", request.number}, {"connection", request.connection}, {"method", request.method},
				{"target", request.target}, {"headers", headersOf(request)}, {"bodyBytes", request.bodyBytes}, {"bodyMd5", request.bodyMd5},
				{"atMilliseconds", millisecondsBetween(exchanges.front().received, exchange.received)}, {"status", exchange.status},
				{"sentBytes", exchange.sentBytes}, {"end", exchange.end}};
			if (std::string_view(exchange.end) != "running")
			{
				entry["tookMilliseconds"] = millisecondsBetween(exchange.received, exchange.ended);
			}
			list.push_back(std::move(entry));
		}
		return list;
	}
} // namespace Lab
