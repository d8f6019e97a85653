#pragma once

#include "Containers/KeyHash.h"

#include <unordered_set>

/** A hash set. Text elements compare without regard to case. Not thread-safe. */
template <class T>
class TSet
{
public:
	void Add(const T& Item) { Items.insert(Item); }
	bool Contains(const T& Item) const { return Items.contains(Item); }
	/** @return the number of elements removed: 0 or 1. */
	int32 Remove(const T& Item) { return static_cast<int32>(Items.erase(Item)); }
	int32 Num() const { return static_cast<int32>(Items.size()); }
	void Empty() { Items.clear(); }

private:
	std::unordered_set<T, TKeyHash<T>> Items;
};
