#pragma once

#include "Lab/Plans/Descriptor.h"
#include "Lab/Wire/Answer.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace Lab
{
	/** Waits for many descriptors and times on one thread. Thread: that one, but for post(), release() and stop(). */
	class Loop
	{
	public:
		/** A place in the list of times. */
		using Timers = std::multimap<Clock::time_point, std::uint64_t>;
		using Timer = Timers::iterator;
		/** What the handler hears, in place of events, after release(). */
		static constexpr std::uint32_t released = ~0U;
		/** @param key  that the descriptor was watched with, or that the time was set for. @param events  of epoll; 0 = the time has come. */
		using Handler = std::function<void(std::uint64_t key, std::uint32_t events)>;

		Loop();

		void watch(int descriptor, std::uint64_t key, std::uint32_t events);
		void change(int descriptor, std::uint64_t key, std::uint32_t events);
		Timer setTimer(Clock::time_point time, std::uint64_t key) { return timers.emplace(time, key); }
		void cancel(Timer timer) { timers.erase(timer); }

		/** Calls the handler until it is stopped. The handler of a time owns it no longer. */
		void run(const Handler& handler);
		/** Calls a function on the loop's thread, soon. Thread: any. */
		void post(std::function<void()> job);
		/** Calls the handler for a key, soon. Thread: any. */
		void release(std::uint64_t key);
		void stop();

	private:
		int millisecondsToNext() const;
		void runJobs(const Handler& handler);
		void runTimers(const Handler& handler);
		void wakeUp();

		Descriptor poller;
		Descriptor bell; // an eventfd that ends the wait
		Timers timers;
		std::atomic<bool> isEnding = false;
		std::mutex mutex; // guards what follows
		std::vector<std::function<void()>> jobs;
		std::vector<std::uint64_t> releasedKeys;
	};
} // namespace Lab
