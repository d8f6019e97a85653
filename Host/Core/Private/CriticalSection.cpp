#include "HAL/CriticalSection.h"

void FCriticalSection::Lock()
{
	Mutex.lock();
}

void FCriticalSection::Unlock()
{
	Mutex.unlock();
}
