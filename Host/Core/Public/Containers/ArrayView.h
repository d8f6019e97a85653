#pragma once

#include "Containers/Array.h"

/** Shows the elements of an array that lives longer, and cannot change its length. */
template <class T>
class TArrayView
{
public:
	TArrayView(const TArray<std::remove_const_t<T>>& Array)
		: Data(Array.GetData())
		, Count(Array.Num())
	{
		static_assert(std::is_const_v<T>, "views of arrays are for reading here");
	}

	T* GetData() const { return Data; }
	int32 Num() const { return Count; }

private:
	T* Data;
	int32 Count;
};
