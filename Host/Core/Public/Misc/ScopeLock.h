#pragma once

#include "HAL/CriticalSection.h"

/** Holds a lock for the length of a block. */
class FScopeLock
{
public:
	explicit FScopeLock(FCriticalSection* InSection)
		: Section(InSection)
	{
		Section->Lock();
	}
	~FScopeLock() { Section->Unlock(); }
	FScopeLock(const FScopeLock&) = delete;
	FScopeLock& operator=(const FScopeLock&) = delete;

private:
	FCriticalSection* Section;
};
