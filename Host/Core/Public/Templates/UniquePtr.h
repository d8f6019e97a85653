#pragma once

#include <memory>

template <class T>
class TUniquePtr
{
public:
	TUniquePtr() = default;
	TUniquePtr(std::nullptr_t) {}
	explicit TUniquePtr(T* Object)
		: Pointer(Object)
	{
	}
	template <class U>
	TUniquePtr(TUniquePtr<U>&& Other)
		: Pointer(Other.Release())
	{
	}

	bool IsValid() const { return Pointer != nullptr; }
	explicit operator bool() const { return IsValid(); }
	T* Get() const { return Pointer.get(); }
	T* operator->() const { return Pointer.get(); }
	T& operator*() const { return *Pointer; }
	T* Release() { return Pointer.release(); }
	void Reset(T* Object = nullptr) { Pointer.reset(Object); }

private:
	std::unique_ptr<T> Pointer;
};

template <class T, class... Args>
TUniquePtr<T> MakeUnique(Args&&... Arguments)
{
	return TUniquePtr<T>(new T(std::forward<Args>(Arguments)...));
}
