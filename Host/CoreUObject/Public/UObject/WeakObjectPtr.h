#pragma once

#include "UObject/Object.h"
#include "UObject/StrongObjectPtr.h"

/** Names an object without holding it; null once it was freed. Copying and comparing are safe on any thread. */
template <class T>
struct TWeakObjectPtr
{
	TWeakObjectPtr() = default;
	TWeakObjectPtr(const T* Object)
		: Handle(ObjectLifetime::HandleOf(Object))
	{
	}

	/** Thread: game thread. Elsewhere the object could be freed after the answer: Pin it. */
	T* Get() const { return static_cast<T*>(ObjectLifetime::Resolve(Handle)); }
	bool IsValid() const { return Get() != nullptr; }
	void Reset() { Handle = {}; }
	/** Holds the object while the result lives. Thread: any. */
	TStrongObjectPtr<T> Pin() const { return TStrongObjectPtr<T>(Handle); }

private:
	ObjectLifetime::FHandle Handle;
};
