#pragma once

#include <chrono>
#include <cstdint>

struct rusage;

namespace ProcessFigures
{
	/** Seconds of user and system time of all threads of this process. */
	double cpuSeconds();
	/** The same of a process that has ended. */
	double cpuSeconds(const rusage& usage);
	/** The same of the calling thread alone. */
	double threadCpuSeconds();
	/** Bytes of memory that this process has in RAM. */
	std::int64_t residentBytes();
	/** The most that it had since the process began or forgetPeak was called. */
	std::int64_t peakResidentBytes();
	void forgetPeak();
	/** For figures. */
	inline double toMebibytes(std::int64_t bytes)
	{
		return static_cast<double>(bytes) / (1 << 20);
	}
	/** Allows this process and its children as many open files as the system lets it. */
	void raiseFileLimit();
} // namespace ProcessFigures

/** Time since its construction on three clocks. Thread: the one that made it. */
class StopWatch
{
public:
	double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); }
	double cpuSeconds() const { return ProcessFigures::cpuSeconds() - cpuStart; }
	double threadCpuSeconds() const { return ProcessFigures::threadCpuSeconds() - threadCpuStart; }

private:
	std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
	double cpuStart = ProcessFigures::cpuSeconds();
	double threadCpuStart = ProcessFigures::threadCpuSeconds();
};
