#pragma once

#include <mutex>

// For the checks of Clang, which knows a lock by these.
#if defined(__clang__)
	#define HOST_LOCK_ATTRIBUTE(attribute) __attribute__((attribute))
#else
	#define HOST_LOCK_ATTRIBUTE(attribute)
#endif

/** A lock that the thread holding it may take again. */
class HOST_LOCK_ATTRIBUTE(capability("lock")) FCriticalSection
{
public:
	void Lock() HOST_LOCK_ATTRIBUTE(acquire_capability());
	void Unlock() HOST_LOCK_ATTRIBUTE(release_capability());

private:
	std::recursive_mutex Mutex;
};
