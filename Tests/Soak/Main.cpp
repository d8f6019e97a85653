#include "Host/Log.h"
#include "Run.h"

#include <CLI/CLI.hpp>

int main(int count, char** arguments)
{
	Soak::Settings settings;
	CLI::App program("Sends requests of all kinds, many at a time, to servers that misbehave, and looks at what comes of each");
	program.add_option("--requests", settings.requests, "How many")->capture_default_str();
	program.add_option("--first", settings.first, "Number of the first one: the same seed and number are the same request");
	program.add_option("--in-flight", settings.inFlight, "At a time")->capture_default_str()->check(CLI::PositiveNumber);
	program.add_option("--faults", settings.faults, "Percent of them to which something happens")->capture_default_str();
	program.add_option("--seed", settings.seed, "Decides what is asked and what goes wrong")->capture_default_str();
	CLI11_PARSE(program, count, arguments);
	HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {}); // failures are wanted
	const Soak::SoakOrigin origin;
	return Soak::Run(settings, origin).play() ? 0 : 1;
}
