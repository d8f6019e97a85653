#pragma once

#include "CoreTypes.h"

#include <memory>
#include <utility>

enum class ESPMode : uint8
{
	NotThreadSafe,
	ThreadSafe
};

template <class T, ESPMode Mode = ESPMode::ThreadSafe>
class TSharedPtr;
template <class T, ESPMode Mode = ESPMode::ThreadSafe>
class TWeakPtr;

/** A shared pointer that is never null. Counting is safe from any thread in both modes. */
template <class T, ESPMode Mode = ESPMode::ThreadSafe>
class TSharedRef
{
public:
	template <class U>
	TSharedRef(const TSharedRef<U, Mode>& Other)
		: Pointer(Other.Pointer)
	{
	}

	/** For host code that owns its objects by the standard pointer. */
	explicit TSharedRef(std::shared_ptr<T> InPointer)
		: Pointer(std::move(InPointer))
	{
		HOST_CHECK(Pointer);
	}

	T* operator->() const { return Pointer.get(); }
	T& operator*() const { return *Pointer; }
	T& Get() const { return *Pointer; }

private:
	template <class, ESPMode>
	friend class TSharedRef;
	template <class, ESPMode>
	friend class TSharedPtr;

	std::shared_ptr<T> Pointer;
};

template <class T, ESPMode Mode>
class TSharedPtr
{
public:
	TSharedPtr() = default;
	TSharedPtr(std::nullptr_t) {}
	explicit TSharedPtr(T* Object)
		: Pointer(Object)
	{
	}
	template <class U>
	TSharedPtr(const TSharedPtr<U, Mode>& Other)
		: Pointer(Other.Pointer)
	{
	}
	template <class U>
	TSharedPtr(const TSharedRef<U, Mode>& Other)
		: Pointer(Other.Pointer)
	{
	}

	bool IsValid() const { return Pointer != nullptr; }
	explicit operator bool() const { return IsValid(); }
	T* Get() const { return Pointer.get(); }
	T* operator->() const { return Pointer.get(); }
	T& operator*() const { return *Pointer; }
	void Reset() { Pointer.reset(); }
	TSharedRef<T, Mode> ToSharedRef() const { return TSharedRef<T, Mode>(Pointer); }
	friend bool operator==(const TSharedPtr& Left, const TSharedPtr& Right) { return Left.Pointer == Right.Pointer; }

private:
	template <class, ESPMode>
	friend class TSharedPtr;
	template <class, ESPMode>
	friend class TWeakPtr;

	std::shared_ptr<T> Pointer;
};

/** Knows an object without keeping it. */
template <class T, ESPMode Mode>
class TWeakPtr
{
public:
	TWeakPtr() = default;
	TWeakPtr(const TSharedPtr<T, Mode>& Object)
		: Pointer(Object.Pointer)
	{
	}
	TWeakPtr(const TSharedRef<T, Mode>& Object)
		: TWeakPtr(TSharedPtr<T, Mode>(Object))
	{
	}

	bool IsValid() const { return !Pointer.expired(); }
	/** @return null when the object is gone. */
	TSharedPtr<T, Mode> Pin() const
	{
		TSharedPtr<T, Mode> Pinned;
		Pinned.Pointer = Pointer.lock();
		return Pinned;
	}
	void Reset() { Pointer.reset(); }

private:
	std::weak_ptr<T> Pointer;
};

/** Base of objects that hand out shared pointers to themselves; they have to be held by one already. */
template <class T, ESPMode Mode = ESPMode::ThreadSafe>
class TSharedFromThis : public std::enable_shared_from_this<T>
{
public:
	TSharedRef<T, Mode> AsShared() { return TSharedRef<T, Mode>(this->shared_from_this()); }
};

template <class T, class... Args>
TSharedRef<T> MakeShared(Args&&... Arguments)
{
	return TSharedRef<T>(std::make_shared<T>(std::forward<Args>(Arguments)...));
}
