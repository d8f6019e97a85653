#include "Lab/Wire/Loop.h"

#include <algorithm>
#include <array>
#include <limits>
#include <sys/epoll.h>
#include <sys/eventfd.h>

namespace Lab
{
	namespace
	{
		constexpr std::uint64_t bellKey = std::numeric_limits<std::uint64_t>::max();

		void control(int poller, int operation, int descriptor, std::uint64_t key, std::uint32_t events)
		{
			epoll_event event{};
			event.events = events;
			event.data.u64 = key;
			check(::epoll_ctl(poller, operation, descriptor, &event), "epoll");
		}
	} // namespace

	Loop::Loop()
		: poller(::epoll_create1(EPOLL_CLOEXEC), "epoll")
		, bell(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")
	{
		watch(bell.get(), bellKey, EPOLLIN);
	}

	void Loop::watch(int descriptor, std::uint64_t key, std::uint32_t events)
	{
		control(poller.get(), EPOLL_CTL_ADD, descriptor, key, events);
	}

	void Loop::change(int descriptor, std::uint64_t key, std::uint32_t events)
	{
		control(poller.get(), EPOLL_CTL_MOD, descriptor, key, events);
	}

	void Loop::run(const Handler& handler)
	{
		std::array<epoll_event, 256> events{};
		while (!isEnding)
		{
			const int number = ::epoll_wait(poller.get(), events.data(), static_cast<int>(events.size()), millisecondsToNext());
			for (int index = 0; index < number; ++index)
			{
				const epoll_event& event = events[static_cast<std::size_t>(index)];
				if (event.data.u64 == bellKey)
				{
					runJobs(handler);
				}
				else
				{
					handler(event.data.u64, event.events);
				}
			}
			runTimers(handler);
		}
	}

	/** Rounded up: a wait that ends too early is a turn for nothing. */
	int Loop::millisecondsToNext() const
	{
		if (timers.empty())
		{
			return -1;
		}
		const auto left = std::chrono::ceil<std::chrono::milliseconds>(timers.begin()->first - Clock::now());
		return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
	}

	void Loop::runTimers(const Handler& handler)
	{
		while (!timers.empty() && timers.begin()->first <= Clock::now())
		{
			const std::uint64_t key = timers.begin()->second;
			timers.erase(timers.begin());
			handler(key, 0);
		}
	}

	void Loop::runJobs(const Handler& handler)
	{
		eventfd_t ignored = 0;
		::eventfd_read(bell.get(), &ignored);
		std::vector<std::function<void()>> mine;
		std::vector<std::uint64_t> keys;
		{
			const std::scoped_lock lock(mutex);
			mine.swap(jobs);
			keys.swap(releasedKeys);
		}
		for (const std::uint64_t key : keys)
		{
			handler(key, released);
		}
		for (const std::function<void()>& job : mine)
		{
			job();
		}
	}

	void Loop::post(std::function<void()> job)
	{
		{
			const std::scoped_lock lock(mutex);
			jobs.push_back(std::move(job));
		}
		wakeUp();
	}

	void Loop::release(std::uint64_t key)
	{
		{
			const std::scoped_lock lock(mutex);
			releasedKeys.push_back(key);
		}
		wakeUp();
	}

	void Loop::stop()
	{
		isEnding = true;
		wakeUp();
	}

	void Loop::wakeUp()
	{
		::eventfd_write(bell.get(), 1);
	}
} // namespace Lab
