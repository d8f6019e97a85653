#pragma once

#include <mutex>

/** A lock that the thread holding it may take again. */
class FCriticalSection
{
public:
	void Lock() { Mutex.lock(); }
	void Unlock() { Mutex.unlock(); }

private:
	std::recursive_mutex Mutex;
};
