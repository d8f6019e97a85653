#pragma once

#include "CoreTypes.h"

#include <deque>
#include <mutex>
#include <utility>

enum class EQueueMode
{
	Mpsc, // many producers, one consumer
	Spsc
};

/** An unbounded first-in-first-out queue. Any number of threads may use it, which is more than either mode asks for. */
template <class T, EQueueMode Mode = EQueueMode::Spsc>
class TQueue
{
public:
	TQueue() = default;
	TQueue(const TQueue&) = delete;
	TQueue& operator=(const TQueue&) = delete;

	bool Enqueue(T Item)
	{
		const std::scoped_lock Lock(Mutex);
		Items.push_back(std::move(Item));
		return true;
	}
	bool Dequeue(T& Item)
	{
		const std::scoped_lock Lock(Mutex);
		if (Items.empty())
		{
			return false;
		}
		Item = std::move(Items.front());
		Items.pop_front();
		return true;
	}
	bool IsEmpty() const
	{
		const std::scoped_lock Lock(Mutex);
		return Items.empty();
	}

private:
	mutable std::mutex Mutex; // guards what follows
	std::deque<T> Items;
};
