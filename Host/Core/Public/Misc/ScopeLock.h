#pragma once

#include "HAL/CriticalSection.h"

/** Holds a lock for the length of a block. */
class HOST_LOCK_ATTRIBUTE(scoped_lockable) FScopeLock
{
public:
	explicit FScopeLock(FCriticalSection* InSection) HOST_LOCK_ATTRIBUTE(acquire_capability(InSection))
		: Section(InSection)
	{
		Section->Lock();
	}
	~FScopeLock() HOST_LOCK_ATTRIBUTE(release_capability()) { Section->Unlock(); }
	FScopeLock(const FScopeLock&) = delete;
	FScopeLock& operator=(const FScopeLock&) = delete;

private:
	FCriticalSection* Section;
};
