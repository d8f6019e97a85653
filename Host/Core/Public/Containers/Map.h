#pragma once

#include "Containers/Array.h"
#include "Containers/KeyHash.h"

#include <list>
#include <unordered_set>

template <class K, class V>
struct TPair
{
	K Key;
	V Value;
};

/**
 * A hash map that is walked in insertion order. Text keys compare without regard to case. Not thread-safe.
 */
template <class K, class V>
class TMap
{
	using FItems = std::list<TPair<K, V>>;

public:
	TMap() = default;
	TMap(std::initializer_list<TPair<K, V>> Pairs)
	{
		for (const TPair<K, V>& Pair : Pairs)
		{
			Add(Pair.Key, Pair.Value);
		}
	}
	TMap(const TMap& Other) { *this = Other; }
	TMap(TMap&& Other) noexcept = default;
	TMap& operator=(TMap&& Other) noexcept = default;
	TMap& operator=(const TMap& Other)
	{
		if (this != &Other)
		{
			Empty();
			for (const TPair<K, V>& Pair : Other.Items)
			{
				Add(Pair.Key, Pair.Value);
			}
		}
		return *this;
	}

	int32 Num() const { return static_cast<int32>(Items.size()); }
	bool IsEmpty() const { return Items.empty(); }
	bool Contains(const K& Key) const { return Find(Key) != nullptr; }
	V* Find(const K& Key)
	{
		const auto Found = Index.find(Key);
		return Found == Index.end() ? nullptr : &(*Found)->Value;
	}
	const V* Find(const K& Key) const { return const_cast<TMap*>(this)->Find(Key); }
	V FindRef(const K& Key) const
	{
		const V* Found = Find(Key);
		return Found ? *Found : V();
	}

	/** Sets the value of a key. An existing pair keeps its place and takes the new spelling of the key. */
	V& Add(const K& Key, V Value)
	{
		const auto Found = Index.find(Key);
		if (Found != Index.end())
		{
			(*Found)->Key = Key; // equal keys hash alike, so the index stays right
			return (*Found)->Value = std::move(Value);
		}
		Items.push_back({Key, std::move(Value)});
		Index.insert(std::prev(Items.end()));
		return Items.back().Value;
	}
	int32 Remove(const K& Key)
	{
		const auto Found = Index.find(Key);
		if (Found == Index.end())
		{
			return 0;
		}
		const typename FItems::iterator Item = *Found;
		Index.erase(Found);
		Items.erase(Item);
		return 1;
	}
	void Empty()
	{
		Index.clear();
		Items.clear();
	}

	auto begin() { return Items.begin(); }
	auto end() { return Items.end(); }
	auto begin() const { return Items.begin(); }
	auto end() const { return Items.end(); }

private:
	struct FItemHash : TKeyHash<K>
	{
		using is_transparent = void;
		using TKeyHash<K>::operator();
		size_t operator()(typename FItems::iterator Item) const { return (*this)(Item->Key); }
	};
	struct FItemEqual
	{
		using is_transparent = void;
		bool operator()(typename FItems::iterator A, typename FItems::iterator B) const { return A->Key == B->Key; }
		bool operator()(const K& Key, typename FItems::iterator Item) const { return Key == Item->Key; }
		bool operator()(typename FItems::iterator Item, const K& Key) const { return Key == Item->Key; }
	};

	FItems Items;
	std::unordered_set<typename FItems::iterator, FItemHash, FItemEqual> Index;
};
