#pragma once

#include "UObject/Object.h"

/**
 * Creates an object in the transient package.
 * @return never null; it lives until a collection finds that nothing holds it.
 * @note Thread: game thread.
 */
template <class T>
T* NewObject()
{
	return static_cast<T*>(ObjectLifetime::Create(T::StaticClass()));
}

/** False for null and for objects that have begun to be destroyed by a collection. Does not detect a dangling pointer. */
bool IsValid(const UObject* Object);

/** @return the object as a T, or null when it is of another class. */
template <class T>
T* Cast(UObject* Object)
{
	return Object && Object->IsA(T::StaticClass()) ? static_cast<T*>(Object) : nullptr;
}

/** The class default object, alive from start-up to the end of the program. */
template <class T>
T* GetMutableDefault()
{
	return static_cast<T*>(T::StaticClass()->GetDefaultObject());
}
