#pragma once

#include "CoreTypes.h"
#include "Misc/ScopeLock.h"

#include <list>
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
		const FScopeLock Held(&Lock);
		Items.push_back(std::move(Item));
		return true;
	}
	bool Dequeue(T& Item)
	{
		const FScopeLock Held(&Lock);
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
		const FScopeLock Held(&Lock);
		return Items.empty();
	}

private:
	mutable FCriticalSection Lock; // guards what follows
	std::list<T> Items;
};
