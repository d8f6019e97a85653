#include "Commands.h"
#include "CorvaneBPLibrary.h"
#include "DemoOrigin.h"
#include "EndSignals.h"
#include "Reference/Examples.h"

#include <fmt/core.h>

#include <algorithm>

namespace Program
{
	int runDemo(const Settings& settings)
	{
		DemoOrigin origin;
		Settings own = settings;
		own.driveBase = settings.driveBase.empty() ? origin.url() : settings.driveBase;
		ProgramLoop loop(own);
		// The host's HTTP layer closes a file before it reports the end, so that nobody has to wait for the repair of one.
		UCorvaneBPLibrary::getCorvaneTarget()->setUploadGracePeriod(0);
		int worst = exitGood;
		for (const Example& example : loadExamples())
		{
			fmt::print("== {}: {}\n", example.file, example.title);
			worst = std::max(worst, runToEnd(loop, example.path, {origin.url()}));
			fmt::print("\n");
			if (EndSignals::asked())
			{
				return worst;
			}
		}
		loop.end(); // before the origin ends
		fmt::print("{}\n", worst == exitGood ? "All examples ran." : "An example failed.");
		return worst;
	}
} // namespace Program
