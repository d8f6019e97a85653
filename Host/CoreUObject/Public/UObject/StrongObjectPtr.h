#pragma once

#include "UObject/Object.h"

#include <utility>

/**
 * Keeps an object alive from code that the collector does not look into. Only the end of the program frees the object all
 * the same; the pointer is null from then on. Thread: any.
 */
template <class T>
class TStrongObjectPtr
{
public:
	TStrongObjectPtr() = default;
	explicit TStrongObjectPtr(T* InObject)
		: TStrongObjectPtr(ObjectLifetime::HandleOf(InObject))
	{
	}
	TStrongObjectPtr(const TStrongObjectPtr& Other)
		: TStrongObjectPtr(Other.Handle)
	{
	}
	TStrongObjectPtr(TStrongObjectPtr&& Other) noexcept
		: Handle(std::exchange(Other.Handle, {}))
	{
	}
	~TStrongObjectPtr() { Reset(); }
	TStrongObjectPtr& operator=(TStrongObjectPtr Other) noexcept
	{
		std::swap(Handle, Other.Handle);
		return *this;
	}

	T* Get() const { return static_cast<T*>(ObjectLifetime::Resolve(Handle)); }
	T* operator->() const { return Get(); }
	bool IsValid() const { return Get() != nullptr; }
	explicit operator bool() const { return IsValid(); }
	void Reset()
	{
		if (Handle.Index != INDEX_NONE) // an empty one is let go of without a lock
		{
			ObjectLifetime::Release(std::exchange(Handle, {}));
		}
	}

private:
	template <class>
	friend struct TWeakObjectPtr;

	explicit TStrongObjectPtr(ObjectLifetime::FHandle InHandle)
		: Handle(ObjectLifetime::Acquire(InHandle) ? InHandle : ObjectLifetime::FHandle())
	{
	}

	ObjectLifetime::FHandle Handle;
};
