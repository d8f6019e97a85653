#pragma once

#include "CoreTypes.h"

/** An open file. Failures are remembered: Close tells of any that happened before. Thread: one at a time. */
class FArchive
{
public:
	virtual ~FArchive() = default;
	/** Writes Length bytes. Value is not changed by a writer. */
	virtual void Serialize(void* Value, int64 Length) = 0;
	/** @return false when anything failed since the file was opened. */
	virtual bool Close() = 0;
};
