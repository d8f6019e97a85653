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
std::unique_ptr<Workload> makeFollowedEvents();
std::unique_ptr<Workload> makeManyFiles();
std::unique_ptr<Workload> makeIdleProgram();
std::unique_ptr<Workload> makeFrames();
std::unique_ptr<Workload> makeFileMd5();
std::unique_ptr<Workload> makeFileBase64();
std::unique_ptr<Workload> makeFileSplit();
std::unique_ptr<Workload> makeDownloads();
std::unique_ptr<Workload> makeUploads();
std::unique_ptr<Workload> makeNodeOverhead();
std::unique_ptr<Workload> makeNodeMemory();
std::unique_ptr<Workload> makeWorkerStart();
