#pragma once

#include "Lab/Wire/Answer.h"

#include <deque>
#include <memory>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace Lab
{
	/** What became of a request. */
	struct Exchange
	{
		std::shared_ptr<const Request> request;
		Clock::time_point received; // when the answer was planned
		Clock::time_point ended; // meaningless as long as it runs
		int status = 0; // 0 = a raw answer
		std::uint64_t sentBytes = 0; // of the answer, head and all
		const char* end = "running"; // or "complete", "dropped", "reset", "hung up" without an answer, "client left"
	};

	/** The exchanges of an origin, the newest ones if there are very many. Thread: any. */
	class Log
	{
	public:
		/** @param inKeeps  false = only what runs is counted. */
		explicit Log(bool inKeeps)
			: keeps(inKeeps)
		{
		}

		using Entry = std::shared_ptr<Exchange>;

		Entry begin(std::shared_ptr<const Request> request, int status);
		void addSent(const Entry& entry, std::size_t bytes);
		void end(const Entry& entry, const char* how);
		void clear();

		std::vector<Exchange> exchanges() const;
		/** Answers under way. */
		int running() const;

	private:
		const bool keeps;
		mutable std::mutex mutex; // guards what follows
		std::deque<Entry> entries;
		int numRunning = 0;
	};

	/** A list of objects, with times in milliseconds since the first of these requests. */
	nlohmann::json toJson(const std::vector<Exchange>& exchanges);
} // namespace Lab
