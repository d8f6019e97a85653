#pragma once

#include "Kit/Comparison.h"

#include <memory>
#include <vector>

namespace CLI
{
	class App;
}

/** One thing that is measured. */
class Workload
{
public:
	virtual ~Workload() = default;

	/** Adds the subcommand that runs this workload, with its options. */
	virtual CLI::App* addTo(CLI::App& program) = 0;
	/** Does all runs with the options that were given. Throws when a run went wrong: there are no figures then. */
	virtual std::vector<Comparison> run() = 0;
};

std::unique_ptr<Workload> makeSmallGets();
std::unique_ptr<Workload> makeIdleRequests();
std::unique_ptr<Workload> makeEventLatency();
std::unique_ptr<Workload> makeIdleProgram();
