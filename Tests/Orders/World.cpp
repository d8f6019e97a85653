#include "World.h"

#include "CorvaneTransfer.h"
#include "Host/Clock.h"
#include "Host/GameThreadTasks.h"
#include "Host/GameThreadTicks.h"
#include "Host/Objects.h"
#include "HostThreads.h"
#include "Modules/ModuleManager.h"

#include <algorithm>

namespace
{
	/** As the engine does it: in the order opposite to that of their start, while everything goes on. */
	void unloadModules()
	{
		std::vector<std::unique_ptr<IModuleInterface>> modules;
		for (const FModuleRegistration* each = FModuleRegistration::First(); each; each = each->Next)
		{
			modules.insert(modules.begin(), each->Create());
		}
		for (const auto& module : modules)
		{
			module->ShutdownModule();
		}
	}

	/** In a run with little to decide. */
	Answer::End otherEnd(Disturbance disturbance)
	{
		using End = Answer::End;
		const bool isTwice = disturbance == Disturbance::CancelAndAgain || disturbance == Disturbance::AgainInHandler;
		return disturbance == Disturbance::Cancel ? End::Silent : isTwice ? End::Whole : End::Dropped;
	}

	bool hasWork()
	{
		return UCorvaneBPLibrary::hasPendingWork() || UCorvaneTransfer::HasPendingWork();
	}
} // namespace

World::World(const TempDir& inFolder, Disturbance inDisturbance, bool inIsBrief)
	: eventsBefore(HostEvents::NumTaken)
	, folder(inFolder)
	, disturbance(inDisturbance)
	, isBrief(inIsBrief)
	, origin(inIsBrief, otherEnd(inDisturbance))
{
	loop.CollectGarbage();
	objectsBefore = HostObjects::NumObjects();
	HostThreads::bMayRefuse = disturbance == Disturbance::NoThread;
	traffic = {[this](const Asked& asked) { return origin.answer(asked); }, !isBrief};
}

void World::play(const Work& work)
{
	work.start();
	int started = -1;
	switch (disturbance)
	{
	case Disturbance::Cancel:
	case Disturbance::CancelAndAgain:
		letPass();
		work.cancel();
		started = traffic.started;
		if (disturbance == Disturbance::CancelAndAgain)
		{
			isBrief ? void() : letPass();
			work.start();
		}
		break;
	case Disturbance::GraphGone:
		letPass();
		work.letGo();
		loop.CollectGarbage();
		break;
	case Disturbance::Pause:
		letPass();
		work.pause(true);
		isPaused = true;
		letPass();
		isPaused = false;
		work.pause(false);
		break;
	case Disturbance::Unload:
		letPass();
		unloadModules();
		break;
	case Disturbance::EndOfProgram:
		if (!isBrief && Schedule::the().choose("starts another one", 2) == 1)
		{
			letPass();
			work.start();
		}
		return letPass();
	default:
		break;
	}
	until([this] { return outcomes >= starts || mayGiveUp(); });
	until([] { return !hasWork(); });
	const bool mayStart = disturbance != Disturbance::Cancel || work.othersGoOn;
	expect(mayStart || traffic.started == started, "a request is sent behind the cancel");
}

void World::end(int number)
{
	expect(number < 0 || told.insert(number).second, "a start has a second outcome");
	expect(++outcomes <= starts, "more outcomes than starts");
	expect(!isOver, "an outcome behind the end of the program");
}

void World::expectNothingLeft()
{
	if (isEnding() || mayGiveUp())
	{
		return; // all of it goes in a moment, or is given up
	}
	until(
		[this]
		{
			loop.CollectGarbage(); // a callback that is just leaving may hold one for a moment
			return HostObjects::NumObjects() <= objectsBefore + lasting && traffic.running == 0 && HostThreads::NumInBackground == 0 &&
				   GameThreadTicks::NextDue() == HostClock::Now().max() && !GameThreadTasks::WaitUntil(HostClock::Now());
		});
	expect(UCorvaneBPLibrary::filesOfRunningDownloads().IsEmpty(), "a download still claims its file");
	expectClosed("");
}

void World::shutDown()
{
	loop.Shutdown();
	isOver = true;
	expect(HostEvents::NumHeld == 0, "a lock is held");
	if (!mayGiveUp()) // what was given up keeps what it has
	{
		expect(HostEvents::NumTaken == eventsBefore, "events of the pool are not given back");
		expectClosed("");
	}
}

bool World::frame(double mostSeconds)
{
	using Clock = std::chrono::steady_clock;
	const Clock::time_point latest =
		HostClock::Now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(mostSeconds));
	const bool hasTask = GameThreadTasks::WaitUntil(std::min(GameThreadTicks::NextDue(), latest));
	const bool happens = hasTask || HostClock::Now() < latest;
	loop.Tick();
	if (disturbance == Disturbance::Collection || disturbance == Disturbance::AgainInHandler)
	{
		loop.CollectGarbage();
	}
	return happens;
}

bool World::mayGiveUp() const
{
	constexpr double patience = 4; // theirs is 5, of which some has passed
	const bool ends = isEnding() || disturbance == Disturbance::Unload;
	return ends && Schedule::the().hurried() >= patience;
}

/** The game goes on until a condition holds. */
void World::until(const std::function<bool()>& condition)
{
	constexpr double longest = 3600;
	double quiet = 0.01; // a condition may depend on more than tasks
	while (!condition())
	{
		quiet = frame(quiet) ? 0.01 : 2 * quiet;
		expect(quiet < longest, "what is waited for never comes");
	}
}

/** The game goes on for none, one or two frames in which something happens. */
void World::letPass()
{
	const int frames = Schedule::the().choose("lets frames pass", isBrief ? 2 : 3);
	for (int number = 0; number < frames && hasWork(); ++number)
	{
		frame(0.01);
	}
}

void World::expectClosed(const std::string& name) const
{
	for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
	{
		std::error_code isGone; // that of the iterator itself
		const std::string path = std::filesystem::read_symlink(entry.path(), isGone).string();
		expect(!path.starts_with(folder.path(name)), "a file is still open: " + path);
	}
}

void World::expectPrefix(const std::string& name) const
{
	const std::string bytes = read(name);
	expect(fileContent.starts_with(bytes), "the file is no beginning of what was sent: " + bytes);
}
