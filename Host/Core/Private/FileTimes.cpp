#include "SystemFiles.h"

#include "NativePath.h"

#include <fcntl.h>
#include <sys/stat.h>

// The clock of the standard library's files does not reach over all years of FDateTime, the system's own does.
namespace
{
	constexpr int64 nanosecondsPerTick = 100;

	FDateTime timeOf(const TCHAR* Filename, timespec stat::*Which)
	{
		struct stat Status = {};
		if (stat(toNativePath(Filename).c_str(), &Status) != 0)
		{
			return FDateTime::MinValue();
		}
		const timespec& Time = Status.*Which;
		return FDateTime(FDateTime::FromUnixTimestamp(Time.tv_sec).GetTicks() + Time.tv_nsec / nanosecondsPerTick);
	}

	timespec toTimespec(FDateTime Time)
	{
		const int64 Ticks = Time.GetTicks() - FDateTime::FromUnixTimestamp(0).GetTicks();
		const int64 Fraction = (Ticks % ETimespan::TicksPerSecond + ETimespan::TicksPerSecond) % ETimespan::TicksPerSecond;
		return {(Ticks - Fraction) / ETimespan::TicksPerSecond, Fraction * nanosecondsPerTick};
	}
} // namespace

FDateTime FSystemFiles::GetTimeStamp(const TCHAR* Filename)
{
	return timeOf(Filename, &stat::st_mtim);
}

FDateTime FSystemFiles::GetAccessTimeStamp(const TCHAR* Filename)
{
	return timeOf(Filename, &stat::st_atim);
}

void FSystemFiles::SetTimeStamp(const TCHAR* Filename, FDateTime DateTime)
{
	const timespec AccessAndChange[] = {{0, UTIME_OMIT}, toTimespec(DateTime)};
	utimensat(AT_FDCWD, toNativePath(Filename).c_str(), AccessAndChange, 0);
}
