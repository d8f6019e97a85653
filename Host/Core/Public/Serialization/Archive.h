#pragma once

#include "CoreTypes.h"

/**
 * An open file. Failures are remembered: after the first one the rest is of no use, and IsError and Close tell of it.
 * Positions and sizes are bytes. Thread: one at a time.
 */
class FArchive
{
public:
	virtual ~FArchive() = default;
	/** Reads or writes exactly Length bytes; fewer are an error. Value is not changed by a writer. */
	virtual void Serialize(void* Value, int64 Length) = 0;
	/** @return a reader's size when it was opened, a writer's size now. */
	virtual int64 TotalSize() = 0;
	/** Moves to a position from the start; free of cost when it is there already. */
	virtual void Seek(int64 Position) = 0;
	virtual int64 Tell() = 0;
	virtual void Flush() {}
	/** @return false when anything failed since the file was opened. */
	virtual bool Close() { return !IsError(); }

	bool IsLoading() const { return bIsLoading; }
	bool IsError() const { return bIsError; }
	void SetError() { bIsError = true; }

protected:
	void SetIsLoading(bool bInIsLoading) { bIsLoading = bInIsLoading; }

private:
	bool bIsLoading = false;
	bool bIsError = false;
};
