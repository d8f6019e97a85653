#include "Kit/ProcessFigures.h"

#include <ctime>
#include <fstream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace
{
	double toSeconds(const timeval& time)
	{
		return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
	}
} // namespace

double ProcessFigures::cpuSeconds()
{
	rusage usage{};
	getrusage(RUSAGE_SELF, &usage);
	return cpuSeconds(usage);
}

double ProcessFigures::cpuSeconds(const rusage& usage)
{
	return toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime);
}

double ProcessFigures::threadCpuSeconds()
{
	timespec time{};
	clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
	return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

std::int64_t ProcessFigures::residentBytes()
{
	std::ifstream statm("/proc/self/statm");
	std::int64_t total = 0;
	std::int64_t resident = 0;
	if (!(statm >> total >> resident))
	{
		throw std::runtime_error("the kernel does not tell this process's memory");
	}
	return resident * sysconf(_SC_PAGESIZE);
}

std::int64_t ProcessFigures::peakResidentBytes()
{
	const std::string name = "VmHWM:";
	std::ifstream status("/proc/self/status");
	for (std::string word; status >> word;)
	{
		if (std::int64_t kibibytes = 0; word == name && status >> kibibytes)
		{
			return kibibytes * 1024;
		}
	}
	throw std::runtime_error("the kernel does not tell this process's peak of memory");
}

void ProcessFigures::forgetPeak()
{
	std::ofstream("/proc/self/clear_refs") << "5";
}

void ProcessFigures::raiseFileLimit()
{
	rlimit limit{};
	getrlimit(RLIMIT_NOFILE, &limit);
	limit.rlim_cur = limit.rlim_max;
	setrlimit(RLIMIT_NOFILE, &limit);
}
