#include "Host/Log.h"
#include "Run.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <unistd.h>

namespace
{
	/**
	 * Begins this program anew, without the free memory that the allocator keeps for each thread: it would count as memory in
	 * use, and hide what is lost behind what is kept.
	 */
	void useOneHeap(char** arguments)
	{
		constexpr const char* name = "GLIBC_TUNABLES";
		if (!std::getenv(name) && setenv(name, "glibc.malloc.tcache_count=0", 1) == 0)
		{
			execv("/proc/self/exe", arguments);
		}
	}
} // namespace

int main(int count, char** arguments)
{
	Settings settings;
	CLI::App program("Sends requests of all kinds, many at a time, to servers that misbehave, and looks at what comes of each");
	program.add_option("--requests", settings.requests, "How many")->capture_default_str();
	program.add_option("--first", settings.first, "Number of the first one: the same seed and number are the same request");
	program.add_option("--in-flight", settings.inFlight, "At a time")->capture_default_str()->check(CLI::PositiveNumber);
	program.add_option("--faults", settings.faults, "Percent of them to which something happens")->capture_default_str();
	program.add_option("--seed", settings.seed, "Decides what is asked and what goes wrong")->capture_default_str();
	program.add_option("--kind", settings.kind, "Only requests of the kinds whose names begin so");
	CLI11_PARSE(program, count, arguments);
	useOneHeap(arguments);
	HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {}); // failures are wanted
	const SoakOrigin origin;
	return Run(settings, origin).play() ? 0 : 1;
}
