#pragma once

#include "Containers/Array.h"

/**
 * Shows memory that somebody else owns as an array that can only be read. Whoever borrows keeps the memory alive and
 * unchanged; it is never freed from here.
 */
template <class T>
class TBorrowedArray
{
public:
	TBorrowedArray() = default;
	~TBorrowedArray() { Borrow(nullptr, 0); } // the array would free what it holds
	TBorrowedArray(const TBorrowedArray&) = delete;
	TBorrowedArray& operator=(const TBorrowedArray&) = delete;

	/** Shows Number elements from Data on instead of what was shown before. */
	void Borrow(const T* Data, int32 Number)
	{
		View.Data = const_cast<T*>(Data); // View is handed out as a constant only
		View.Count = Number;
	}

	const TArray<T>& Get() const { return View; }

private:
	TArray<T> View;
};
