#include "Threads/ByteBuffer.h"

#include "Misc/ScopeLock.h"

bool FCorvaneByteBuffer::Put(const uint8* Bytes, int64 Number, bool& bFirst, uint32 Patience)
{
	for (;;)
	{
		{
			const FScopeLock Lock(&Guard);
			if (bClosed)
			{
				return false;
			}
			if (Waiting.Num() == 0 || Waiting.Num() + Number <= Limit)
			{
				bFirst = Waiting.Num() == 0;
				Waiting.Append(Bytes, static_cast<int32>(Number));
				return true;
			}
		}
		if (!Taken->Wait(Patience))
		{
			return false;
		}
	}
}

bool FCorvaneByteBuffer::Take(TArray<uint8>& Bytes)
{
	{
		const FScopeLock Lock(&Guard);
		Bytes.Reset();
		TArray<uint8> Emptied = MoveTemp(Bytes); // its memory is used again
		Bytes = MoveTemp(Waiting);
		Waiting = MoveTemp(Emptied);
	}
	Taken->Trigger();
	return Bytes.Num() > 0;
}

void FCorvaneByteBuffer::Close()
{
	{
		const FScopeLock Lock(&Guard);
		bClosed = true;
		Waiting.Empty();
	}
	Taken->Trigger();
}

void FCorvaneByteBuffer::Reopen()
{
	const FScopeLock Lock(&Guard);
	bClosed = false; // what waits may have come before this
}
