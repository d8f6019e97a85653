#include "GameLoop.h"
#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <condition_variable>
#include <fmt/format.h>
#include <mutex>

namespace
{
	Figures figures(const StopWatch& watch)
	{
		return {{"process CPU", "ms/s", watch.cpuSeconds() / watch.seconds() * 1e3}};
	}

	Figures measureCorvane(double seconds)
	{
		FGameLoop loop;
		const StopWatch watch;
		loop.WaitFor([] { return false; }, seconds);
		return figures(watch);
	}

	/** What a loop costs that wakes up as often as the game thread's and does nothing. */
	Figures measureBareLoop(double seconds)
	{
		std::mutex mutex;
		std::condition_variable never;
		std::unique_lock lock(mutex);
		const StopWatch watch;
		while (watch.seconds() < seconds)
		{
			never.wait_for(lock, std::chrono::milliseconds(10));
		}
		return figures(watch);
	}

	class IdleProgram final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("idle-program", "CPU time of a program in which nothing happens");
			command->add_option("--seconds", seconds, "Length of one run")->capture_default_str()->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair");
			return command;
		}

		std::vector<Comparison> run() override
		{
			Comparison empty(fmt::format("idle-program: {} seconds of waiting", seconds), "bare loop");
			return {alternate(
				std::move(empty), pairs, WarmUp::OnePair, [this] { return measureCorvane(seconds); },
				[this] { return measureBareLoop(seconds); })};
		}

	private:
		double seconds = 5;
		int pairs = 3;
	};
} // namespace

std::unique_ptr<Workload> makeIdleProgram()
{
	return std::make_unique<IdleProgram>();
}
