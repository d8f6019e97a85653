#include "ResponseBody.h"

#include "Host/LargePages.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace
{
	/** A length is only a claim: more than this is not set aside before the bytes come. */
	constexpr uint64 largestReserve = 64u << 20;
	constexpr size_t smallestBlock = 4096;
} // namespace

bool FResponseBody::Append(const char* Bytes, size_t Number)
{
	const size_t Fitting = std::min(Number, static_cast<size_t>(Limit) - Size);
	if (!MakeRoom(Size + Fitting))
	{
		return false;
	}
	if (Fitting > 0)
	{
		std::memcpy(Block.get() + Size, Bytes, Fitting); // nobody reads there before Size says so
		const std::scoped_lock Lock(Mutex);
		Size += Fitting;
	}
	return Fitting == Number;
}

bool FResponseBody::MakeRoom(size_t Wanted)
{
	if (Wanted <= Capacity)
	{
		return true;
	}
	const size_t NewCapacity = std::max(Wanted, std::min(RoomyCapacity(), static_cast<size_t>(Limit)));
	try
	{
		FBlock Grown = std::make_shared_for_overwrite<uint8[]>(NewCapacity);
		preferLargePages(Grown.get(), static_cast<int64>(NewCapacity));
		std::copy_n(Block.get(), Size, Grown.get());
		const std::scoped_lock Lock(Mutex);
		Block.swap(Grown);
	}
	catch (const std::bad_alloc&)
	{
		return false;
	}
	Capacity = NewCapacity;
	return true;
}

size_t FResponseBody::RoomyCapacity() const
{
	if (Expected == 0)
	{
		return std::max(smallestBlock, Capacity + Capacity / 2);
	}
	const uint64 Trusted = std::max<uint64>(largestReserve, 8 * static_cast<uint64>(Capacity)); // more once so much has come
	return std::max(static_cast<size_t>(std::min(Expected, Trusted)), Capacity + Capacity / 2);
}

const TArray<uint8>& FResponseBody::Snapshot() const
{
	const std::scoped_lock Lock(Mutex);
	FSnapshot& Mine = SnapshotOfThisThread();
	Mine.Held = Block;
	Mine.Array.Borrow(Block.get(), static_cast<int32>(Size));
	return Mine.Array.Get();
}

FResponseBody::FSnapshot& FResponseBody::SnapshotOfThisThread() const
{
	const std::thread::id Thread = std::this_thread::get_id();
	for (FSnapshot& Known : Snapshots)
	{
		if (Known.Thread == Thread)
		{
			return Known;
		}
	}
	FSnapshot& Added = Snapshots.emplace_front();
	Added.Thread = Thread;
	return Added;
}
