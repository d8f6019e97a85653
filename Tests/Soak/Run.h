#pragma once

#include "CorvaneTransferQueue.h"
#include "Errand.h"
#include "GameLoop.h"
#include "Meter.h"
#include "SoakOrigin.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <chrono>
#include <map>
#include <memory>

struct Settings
{
	std::uint64_t requests = 1'000'000;
	std::uint64_t first = 0; // number of the first one
	std::size_t inFlight = 64;
	double faults = 5; // percent
	std::uint64_t seed = 1;
	std::string kind; // only those whose names begin so
};

/** A program that sends requests of all kinds and looks at what comes of each. Thread: game thread. */
class Run
{
public:
	Run(const Settings& inSettings, const SoakOrigin& inOrigin);

	/** @return whether all was as it has to be. */
	bool play();

	// For the kinds:

	/** The next outcome of a request. One that is not due is a fault. */
	void end(std::uint64_t number, const Outcome& outcome);
	/** @return null when it is over. */
	Errand* find(std::uint64_t number);
	/** Makes the file of an upload. */
	void makeSource(Errand& errand);
	/** Does something later, if the request is not over by then. */
	void later(const Errand& errand, double milliseconds, std::function<void(Errand&)> action);
	/** What does not hold is a fault, and is told. */
	void expect(std::uint64_t number, bool holds, const std::string& what);
	/** A program that downloads to the same places again and again: the module keeps something of each unfinished place. */
	std::string target(const Errand& errand) const { return targets.path("slot" + std::to_string(errand.slot) + ".bin"); }

	const SoakOrigin& origin;
	const TempDir journals;
	int queued = 0; // transfers that went into the queue

private:
	struct Count
	{
		std::uint64_t starts = 0, successes = 0, failures = 0, cancelled = 0;
	};
	struct Appointment
	{
		std::chrono::steady_clock::time_point time;
		std::uint64_t number;
		std::function<void(Errand&)> action;
	};

	void start(std::uint64_t number);
	void draw(Errand& errand);
	void disturb(Errand& errand);
	void judge(Errand& errand, const Outcome& outcome);
	void startAgain(Errand& errand);
	void leave(Errand& errand, bool isSuccess);
	std::uint64_t inSlot(std::size_t slot) const;
	void keepAppointments();
	bool goOnUntil(std::uint64_t goal);
	void comeToRest();
	void checkFolders();
	void checkQueue();
	void listenToLibrary();
	bool printVerdict();

	const Settings settings;
	const TempDir targets;
	const TempDir sources;
	std::vector<Kind> kinds;
	std::vector<const Kind*> byWeight;
	std::map<std::uint64_t, std::unique_ptr<Errand>> errands; // by number
	std::vector<std::size_t> freeSlots;
	std::vector<Appointment> appointments;
	std::vector<std::pair<std::string, Wish>> sourceFiles; // that are compared when nothing runs
	std::map<std::string, Count> counts;
	std::uint64_t next;
	std::size_t objectsBefore;
	int queueEnds = 0;
	int faultsFound = 0;
	std::vector<Sample> samples;
	FGameLoop loop; // last: at its end it tells of what still runs
};
