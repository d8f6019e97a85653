#include "Misc/DateTime.h"

#include <chrono>
#include <ctime>
#include <ratio>

FDateTime FDateTime::UtcNow()
{
	using FTick = std::chrono::duration<int64, std::ratio<1, ETimespan::TicksPerSecond>>;
	constexpr int64 ticksAtUnixEpoch = 621'355'968'000'000'000;
	const auto SinceEpoch = std::chrono::system_clock::now().time_since_epoch();
	return FDateTime(ticksAtUnixEpoch + std::chrono::duration_cast<FTick>(SinceEpoch).count());
}

FDateTime FDateTime::Now()
{
	const std::time_t Seconds = std::time(nullptr);
	std::tm Local{};
	localtime_r(&Seconds, &Local);
	return FDateTime(UtcNow().GetTicks() + Local.tm_gmtoff * ETimespan::TicksPerSecond);
}
