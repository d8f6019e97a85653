#include "Scenarios.h"

#include "Schedule.h"

#include <memory>

namespace
{
	struct Named
	{
		Disturbance disturbance;
		const char* name;
		unsigned needs = 0; // what a kind must not be without
	};

	constexpr Named disturbances[] = {
		{Disturbance::None, "alone"},
		{Disturbance::Cancel, "cancel"},
		{Disturbance::CancelAndAgain, "cancel-and-again"},
		{Disturbance::Collection, "collection"},
		{Disturbance::GraphGone, "graph-gone", NoGraph},
		{Disturbance::NoThread, "no-thread"},
		{Disturbance::Pause, "pause", NoPause},
		{Disturbance::Unload, "unload"},
		{Disturbance::EndOfProgram, "end-of-program"},
		{Disturbance::AgainInHandler, "again-in-handler", NoHandler},
	};

	std::unique_ptr<TempDir> theFolder; // it stays where a run fails

	const TempDir& emptyFolder()
	{
		if (!theFolder)
		{
			theFolder = std::make_unique<TempDir>(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
		}
		for (const auto& entry : std::filesystem::directory_iterator(theFolder->path()))
		{
			std::filesystem::remove_all(entry.path());
		}
		return *theFolder;
	}
} // namespace

std::vector<Scenario> scenarios()
{
	std::vector<Scenario> made;
	for (const auto& kindsOfRoom : {requestKinds(), nodeKinds(), transferKinds(), uploadKinds()})
	{
		for (const Kind& kind : kindsOfRoom)
		{
			for (const Named& each : disturbances)
			{
				if ((each.needs & kind.without) == 0)
				{
					made.push_back({std::string(kind.name) + '/' + each.name, each.disturbance, kind});
				}
			}
		}
	}
	return made;
}

void removeFolder()
{
	theFolder.reset();
}

std::size_t playOnce(const Scenario& scenario, Chooser& chooser, bool isBrief)
{
	Schedule& schedule = Schedule::the();
	schedule.title = scenario.name;
	schedule.begin(chooser);
	bool hasGivenUp = false;
	{
		World world(emptyFolder(), scenario.disturbance, isBrief);
		scenario.kind.play(world);
		world.expectNothingLeft();
		world.shutDown();
		const bool isTold = world.outcomes == world.starts || world.mayGiveUp() || (world.isEnding() && !scenario.kind.alwaysTells());
		world.expect(isTold, "a start has no outcome");
		if (scenario.kind.look)
		{
			scenario.kind.look(world);
		}
		hasGivenUp = world.mayGiveUp();
	}
	if (hasGivenUp)
	{
		removeFolder(); // what was given up may claim files in it for ever
	}
	return schedule.end();
}
