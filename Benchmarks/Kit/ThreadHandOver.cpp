#include "Kit/ThreadHandOver.h"

ThreadHandOver::ThreadHandOver(std::function<void(std::string_view)> inTake)
	: take(std::move(inTake))
	, thread([this] { takeAll(); })
{
}

ThreadHandOver::~ThreadHandOver()
{
	{
		const std::scoped_lock lock(mutex);
		isOver = true;
	}
	changed.notify_all();
	thread.join();
}

void ThreadHandOver::put(std::string_view bytes)
{
	constexpr std::size_t most = 1 << 20;
	{
		std::unique_lock lock(mutex);
		changed.wait(lock, [this] { return waiting.size() < most; });
		waiting += bytes;
	}
	changed.notify_all();
}

void ThreadHandOver::takeAll()
{
	std::string taken;
	for (;;)
	{
		{
			std::unique_lock lock(mutex);
			changed.wait(lock, [this] { return isOver || !waiting.empty(); });
			if (waiting.empty())
			{
				return;
			}
			taken.clear();
			std::swap(taken, waiting);
		}
		changed.notify_all();
		take(taken);
	}
}
