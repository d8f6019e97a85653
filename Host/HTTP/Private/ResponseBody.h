#pragma once

#include "Host/BorrowedArray.h"

#include <forward_list>
#include <memory>
#include <mutex>
#include <thread>

/**
 * Bytes that one thread appends while others read. A reader sees the bytes so far, frozen: what follows is written
 * behind them, and when the storage has to grow, the readers keep the old block. Reading therefore copies nothing.
 */
class FResponseBody
{
public:
	/** @param InLimit  bytes that fit in; an array cannot show more than the default. */
	explicit FResponseBody(int32 InLimit = MAX_int32)
		: Limit(InLimit)
	{
	}

	/** Says how many bytes to expect, 0 when unknown. Thread: the writer, before it appends. */
	void Expect(uint64 Bytes) { Expected = Bytes; }

	/** @return false when the limit is reached or memory is short; the bytes that fit are kept. Thread: the writer. */
	bool Append(const char* Bytes, size_t Number);

	/** @return the bytes so far; the reference holds until the same thread asks again. Thread: any. */
	const TArray<uint8>& Snapshot() const;

private:
	using FBlock = std::shared_ptr<uint8[]>;

	struct FSnapshot
	{
		std::thread::id Thread;
		FBlock Held;
		TBorrowedArray<uint8> Array;
	};

	bool MakeRoom(size_t Wanted);
	size_t RoomyCapacity() const;
	FSnapshot& SnapshotOfThisThread() const;

	const int32 Limit;
	uint64 Expected = 0; // writer only
	size_t Capacity = 0; // writer only
	mutable std::mutex Mutex; // guards what follows; the writer, alone to change Block and Size, reads them without it
	FBlock Block;
	size_t Size = 0;
	mutable std::forward_list<FSnapshot> Snapshots; // one for each thread that ever asked
};
