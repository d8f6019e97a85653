#pragma once

#include "CoreTypes.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

/**
 * A growing array with 32-bit sizes. Element addresses change when it grows. Not thread-safe.
 */
template <class T>
class TArray
{
	static_assert(alignof(T) <= alignof(std::max_align_t), "over-aligned elements are not supported");

public:
	TArray() = default;
	TArray(std::initializer_list<T> Items) { Append(Items.begin(), static_cast<int32>(Items.size())); }
	TArray(const TArray& Other) { Append(Other.Data, Other.Count); }
	TArray(TArray&& Other) noexcept { Swap(Other); }
	~TArray() { Empty(); }

	TArray& operator=(const TArray& Other)
	{
		TArray Copy(Other);
		Swap(Copy);
		return *this;
	}
	TArray& operator=(TArray&& Other) noexcept
	{
		TArray Taken(std::move(Other));
		Swap(Taken);
		return *this;
	}

	int32 Num() const { return Count; }
	bool IsEmpty() const { return Count == 0; }
	T* GetData() { return Data; }
	const T* GetData() const { return Data; }
	bool IsValidIndex(int32 Index) const { return Index >= 0 && Index < Count; }
	T& operator[](int32 Index) { return *At(Index); }
	const T& operator[](int32 Index) const { return *At(Index); }
	T& Last() { return *At(Count - 1); }
	const T& Last() const { return *At(Count - 1); }
	T* begin() { return Data; }
	T* end() { return Data + Count; }
	const T* begin() const { return Data; }
	const T* end() const { return Data + Count; }

	int32 Add(const T& Item) { return Emplace(Item); }
	int32 Add(T&& Item) { return Emplace(std::move(Item)); }
	template <class... Args>
	int32 Emplace(Args&&... Arguments)
	{
		T Item(std::forward<Args>(Arguments)...); // made first: the argument may live in this array
		Grow(1);
		::new (static_cast<void*>(Data + Count)) T(std::move(Item));
		return Count++;
	}

	void Append(const TArray& Other) { Append(Other.Data, Other.Count); }
	/** Items must not lie inside this array. */
	void Append(const T* Items, int32 Number)
	{
		Grow(Number);
		std::uninitialized_copy_n(Items, Number, Data + Count);
		Count += Number;
	}

	bool Contains(const T& Item) const { return std::find(begin(), end(), Item) != end(); }
	/** Removes the first equal element. @return the number of elements removed: 0 or 1. */
	int32 RemoveSingle(const T& Item)
	{
		T* Found = std::find(begin(), end(), Item);
		if (Found == end())
		{
			return 0;
		}
		RemoveAt(static_cast<int32>(Found - begin()));
		return 1;
	}
	/** Puts an element before the one at an index, or at the end. @return the index. */
	int32 Insert(const T& Item, int32 Index)
	{
		Emplace(Item);
		std::rotate(Data + Index, Data + Count - 1, Data + Count);
		return Index;
	}
	/** Removes one element; those after it move up. */
	void RemoveAt(int32 Index)
	{
		T* Removed = At(Index);
		std::move(Removed + 1, end(), Removed);
		std::destroy_at(Data + --Count);
	}

	/** Destroys the elements and frees the storage, but for room for Slack elements. */
	void Empty(int32 Slack = 0)
	{
		std::destroy_n(Data, Count);
		std::free(Data);
		Data = nullptr;
		Count = Capacity = 0;
		Reserve(Slack);
	}
	/** Destroys the elements and keeps the storage. */
	void Reset()
	{
		std::destroy_n(Data, Count);
		Count = 0;
	}
	void Reserve(int32 Number)
	{
		if (Number > Capacity)
		{
			Reallocate(Number);
		}
	}
	/** Changes the length; new elements hold whatever the memory held. */
	void SetNumUninitialized(int32 Number)
	{
		static_assert(std::is_trivially_copyable_v<T>, "only plain data may stay uninitialised");
		Reserve(Number);
		Count = Number;
	}

	friend bool operator==(const TArray& Left, const TArray& Right)
	{
		return std::equal(Left.begin(), Left.end(), Right.begin(), Right.end());
	}

private:
	T* At(int32 Index) const
	{
		HOST_CHECK(IsValidIndex(Index));
		return Data + Index;
	}

	void Swap(TArray& Other) noexcept
	{
		std::swap(Data, Other.Data);
		std::swap(Count, Other.Count);
		std::swap(Capacity, Other.Capacity);
	}

	void Grow(int32 Number)
	{
		HOST_CHECK(Number >= 0 && Number <= MAX_int32 - Count);
		if (Count + Number > Capacity)
		{
			const int64 Roomy = static_cast<int64>(Capacity) + Capacity / 2 + 4;
			Reallocate(static_cast<int32>(std::min<int64>(std::max<int64>(Roomy, Count + Number), MAX_int32)));
		}
	}

	void Reallocate(int32 NewCapacity)
	{
		const size_t Bytes = static_cast<size_t>(NewCapacity) * sizeof(T);
		T* NewData;
		if constexpr (std::is_trivially_copyable_v<T>)
		{
			NewData = static_cast<T*>(std::realloc(static_cast<void*>(Data), Bytes));
			HOST_CHECK(NewData);
		}
		else
		{
			NewData = static_cast<T*>(std::malloc(Bytes));
			HOST_CHECK(NewData);
			std::uninitialized_move_n(Data, Count, NewData);
			std::destroy_n(Data, Count);
			std::free(Data);
		}
		Data = NewData;
		Capacity = NewCapacity;
	}

	T* Data = nullptr;
	int32 Count = 0;
	int32 Capacity = 0;
};
