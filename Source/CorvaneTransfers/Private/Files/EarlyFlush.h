#pragma once

#include "CoreMinimal.h"
#include "Templates/SharedPointer.h"

/**
 * Has the disk begin with the bytes of a file while more of them are written, so that the wait for it at the end is short. It is
 * a hint and vouches for nothing: where a file that is open for reading cannot be flushed (CORVANE_FLUSHES_READ_FILES is 0), it
 * does nothing.
 * Thread: one at a time.
 */
class FCorvaneEarlyFlush
{
public:
	FCorvaneEarlyFlush();
	~FCorvaneEarlyFlush();
	FCorvaneEarlyFlush(const FCorvaneEarlyFlush&) = delete;
	FCorvaneEarlyFlush& operator=(const FCorvaneEarlyFlush&) = delete;

	/** So many bytes were written. Now and then has them flushed on a background thread. */
	void Note(const FString& File, int64 Bytes);
	/** Waits until the background thread has let go of the file. */
	void Stop();

private:
	class FWork;

	const TSharedRef<FWork> Work;
	int64 Unflushed = 0;
};
