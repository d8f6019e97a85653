#pragma once

#include "UObject/Object.h"

#include <utility>

/** Keeps an object alive from code that the collector does not look into. Thread: any. */
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
		, Object(std::exchange(Other.Object, nullptr))
	{
	}
	~TStrongObjectPtr() { Reset(); }
	TStrongObjectPtr& operator=(TStrongObjectPtr Other) noexcept
	{
		std::swap(Handle, Other.Handle);
		std::swap(Object, Other.Object);
		return *this;
	}

	T* Get() const { return Object; }
	T* operator->() const { return Object; }
	bool IsValid() const { return Object != nullptr; }
	explicit operator bool() const { return IsValid(); }
	void Reset()
	{
		if (std::exchange(Object, nullptr))
		{
			ObjectLifetime::Release(Handle);
		}
	}

private:
	template <class>
	friend struct TWeakObjectPtr;

	explicit TStrongObjectPtr(ObjectLifetime::FHandle InHandle)
		: Handle(InHandle)
		, Object(static_cast<T*>(ObjectLifetime::Acquire(InHandle)))
	{
	}

	ObjectLifetime::FHandle Handle;
	T* Object = nullptr;
};
