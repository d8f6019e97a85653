#include "Host/Log.h"
#include "Scenarios.h"
#include "Schedule.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>

namespace
{
	struct Wishes
	{
		std::string scenario;
		std::uint64_t seed = 0;
		std::uint64_t runs = 0;
		std::string path;
		int preemptions = -1;
		bool onlySmall = false;
		bool onlyLarge = false;
		bool printsTrace = false;
	};

	void playRandom(const Scenario& scenario, const Wishes& wishes, std::uint64_t runs)
	{
		std::size_t points = 0;
		for (std::uint64_t run = 0; run < runs; ++run)
		{
			RandomChooser chooser(wishes.seed + run);
			points += playOnce(scenario, chooser, false);
		}
		std::printf(
			"%-26s %8llu random orders, %4zu points each", scenario.name.c_str(), static_cast<unsigned long long>(runs), points / runs);
	}

	void playAll(const Scenario& scenario, int preemptions)
	{
		EveryOrder chooser(preemptions);
		std::size_t runs = 0;
		do
		{
			chooser.rewind();
			playOnce(scenario, chooser, true);
			++runs;
		} while (chooser.advance());
		std::printf("%-26s %8zu orders, all with %d preemptions", scenario.name.c_str(), runs, preemptions);
	}

	void play(const Scenario& scenario, const Wishes& wishes)
	{
		const auto begin = std::chrono::steady_clock::now();
		if (!wishes.path.empty())
		{
			EveryOrder chooser = EveryOrder::of(wishes.path);
			playOnce(scenario, chooser, true);
		}
		else if (wishes.preemptions >= 0)
		{
			playAll(scenario, wishes.preemptions);
		}
		else
		{
			playRandom(scenario, wishes, std::max<std::uint64_t>(1, wishes.runs));
		}
		std::printf(", %.1f s\n", std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
		std::fflush(stdout);
	}
} // namespace

int main(int count, char** arguments)
{
	Wishes wishes;
	CLI::App program("Runs the modules in every order that a scheduler can think of: one thread at a time, changed at its points");
	program.add_option("--scenario", wishes.scenario, "The one of this name, or those whose names begin so");
	program.add_option("--runs", wishes.runs, "Random orders of each scenario");
	program.add_option("--seed", wishes.seed, "Of the first random order; the others follow")->capture_default_str();
	program.add_option("--every", wishes.preemptions, "All orders in which a turn is taken away so often at most");
	program.add_option("--path", wishes.path, "One order, as a failure has printed it");
	program.add_flag("--large", wishes.onlyLarge, "Only scenarios with many points");
	program.add_flag("--small", wishes.onlySmall, "Only scenarios with few points");
	program.add_flag("--trace", wishes.printsTrace, "Print how the last run went");
	CLI11_PARSE(program, count, arguments);
	HostLog::SetSink([](const char*, ELogVerbosity::Type, const FString&) {});
	bool found = false;
	const std::vector<Scenario> all = scenarios();
	const bool isOne = std::ranges::any_of(all, [&wishes](const Scenario& each) { return each.name == wishes.scenario; });
	for (const Scenario& scenario : all)
	{
		const bool fits = scenario.isSmall() ? !wishes.onlyLarge : !wishes.onlySmall;
		if (fits && (isOne ? scenario.name == wishes.scenario : scenario.name.starts_with(wishes.scenario)))
		{
			found = true;
			play(scenario, wishes);
		}
	}
	if (wishes.printsTrace)
	{
		Schedule::the().printTrace();
	}
	removeFolder();
	std::fflush(stdout);
	_exit(found ? 0 : 2); // the threads of the schedule wait for ever
}
