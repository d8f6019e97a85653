#include "Kit/RequestFigures.h"

#include "Kit/ProcessFigures.h"

namespace
{
	Figure perRequest(const char* name, double seconds, int requests)
	{
		return {name, "us/request", seconds / requests * 1e6};
	}
} // namespace

Figures requestFigures(const StopWatch& watch, int requests)
{
	return {{"rate", "requests/s", requests / watch.seconds()}, perRequest("process CPU", watch.cpuSeconds(), requests)};
}

Figures requestFiguresOfGame(const StopWatch& watch, int requests)
{
	Figures taken = requestFigures(watch, requests);
	taken.push_back(perRequest("game thread CPU", watch.threadCpuSeconds(), requests));
	return taken;
}
