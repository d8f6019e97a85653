#include "HAL/PlatformTime.h"

#include "Host/Clock.h"

std::chrono::steady_clock::time_point HostClock::Now()
{
	return std::chrono::steady_clock::now();
}

std::chrono::system_clock::time_point HostClock::Today()
{
	return std::chrono::system_clock::now();
}

double FPlatformTime::Seconds()
{
	return std::chrono::duration<double>(HostClock::Now().time_since_epoch()).count();
}
