#include "Kit/Options.h"
#include "Kit/ProcessFigures.h"
#include "Kit/Self.h"
#include "Kit/Statistics.h"
#include "Kit/WorkerStarts.h"
#include "Workload.h"

#include <CLI/CLI.hpp>
#include <deque>
#include <fmt/format.h>
#include <numeric>
#include <thread>

namespace
{
	using Clock = OneJobWorker::Clock;

	double microsecondsSince(Clock::time_point start, Clock::time_point end = Clock::now())
	{
		return std::chrono::duration<double, std::micro>(end - start).count();
	}

	/** The time that a server takes: whoever waits for its answer is asleep when it arrives. */
	void waitForAnswer()
	{
		std::this_thread::sleep_for(std::chrono::microseconds(200));
	}

	using Workers = std::deque<OneJobWorker>;

	/** What the requests of one run took. */
	struct Taken
	{
		std::vector<double> held; // microseconds of the HTTP thread, to bring one first job on its way
		std::vector<double> job; // microseconds until the job, since its burst arrived
		double cpuSeconds = 0; // of the HTTP thread

		Figures figures() const
		{
			const double number = static_cast<double>(held.size());
			const double heldSeconds = std::accumulate(held.begin(), held.end(), 0.0) * 1e-6;
			return {{"HTTP thread held, p50", "us", Statistics::quantile(held, 0.5)},
				{"HTTP thread held, p99", "us", Statistics::quantile(held, 0.99)},
				{"HTTP thread CPU", "us/request", cpuSeconds * 1e6 / number}, {"HTTP thread's limit", "requests/s", number / heldSeconds},
				{"until first job, p50", "us", Statistics::quantile(job, 0.5)},
				{"until first job, p99", "us", Statistics::quantile(job, 0.99)}};
		}
	};

	void measureBurst(WorkerStart& way, Workers::iterator first, Workers::iterator last, Taken& taken)
	{
		for (auto worker = first; worker != last; ++worker)
		{
			way.beginRequest(*worker);
		}
		waitForAnswer();
		const StopWatch watch;
		const Clock::time_point arrived = Clock::now();
		for (auto worker = first; worker != last; ++worker)
		{
			const Clock::time_point start = Clock::now();
			way.firstJob(*worker);
			taken.held.push_back(microsecondsSince(start));
		}
		taken.cpuSeconds += watch.threadCpuSeconds();
		for (auto worker = first; worker != last; ++worker)
		{
			taken.job.push_back(microsecondsSince(arrived, worker->waitForJob()));
		}
	}

	Figures measureBursts(WorkerStarts::Make& make, int requests, int burst)
	{
		const std::unique_ptr<WorkerStart> way = make();
		// None is joined before the end: workers are freed when objects are collected, and until then a new thread gets a new stack.
		Workers workers(static_cast<std::size_t>(requests));
		Taken taken;
		for (int number = 0; number < requests; number += burst)
		{
			measureBurst(*way, workers.begin() + number, workers.begin() + std::min(number + burst, requests), taken);
		}
		return taken.figures();
	}

	/** What requests cost that have started and have no answer yet. */
	Figures measureWaiting(WorkerStarts::Make& make, int requests)
	{
		const std::unique_ptr<WorkerStart> way = make();
		Workers workers(static_cast<std::size_t>(requests));
		std::vector<double> held(workers.size());
		const std::int64_t before = ProcessFigures::residentBytes();
		for (std::size_t number = 0; number < workers.size(); ++number)
		{
			const Clock::time_point start = Clock::now();
			way->beginRequest(workers[number]);
			held[number] = microsecondsSince(start);
		}
		waitForAnswer();
		const double taken = static_cast<double>(ProcessFigures::residentBytes() - before);
		for (OneJobWorker& worker : workers)
		{
			way->firstJob(worker);
		}
		for (OneJobWorker& worker : workers)
		{
			worker.waitForJob();
		}
		return {{"threads' memory", "KiB/request", taken / 1024 / requests},
			{"game thread held, p50", "us", Statistics::quantile(held, 0.5)},
			{"game thread held, p99", "us", Statistics::quantile(held, 0.99)}};
	}

	class WorkerStartWorkload final : public Workload
	{
	public:
		CLI::App* addTo(CLI::App& program) override
		{
			CLI::App* command = program.add_subcommand("worker-start", "Who should make a request's thread, and what its making holds up");
			command->add_option("--requests", requests, "Requests of one run")->capture_default_str()->check(CLI::PositiveNumber);
			command->add_option("--burst", bursts, "Answers that arrive at a time; each value is measured")
				->capture_default_str()
				->check(CLI::PositiveNumber);
			command->add_option("--waiting", waiting, "Requests that wait at a time for the memory")
				->capture_default_str()
				->check(CLI::PositiveNumber);
			addPairs(*command, pairs, "Pairs of runs after one warm-up pair; those of the memory have a fresh process each");
			command->add_option("--side", side)->group(""); // for the fresh processes alone
			return command;
		}

		std::vector<Comparison> run() override
		{
			if (!side.empty())
			{
				printForParent(measureWaiting(side == "corvane" ? WorkerStarts::byFirstJob : WorkerStarts::byGameThread, waiting));
				return {};
			}
			std::vector<Comparison> results;
			for (const int burst : bursts)
			{
				results.push_back(besides(WorkerStarts::byGameThread, "game thread", burst));
				results.push_back(besides(WorkerStarts::byStarter, "starter", burst));
				results.push_back(besides(WorkerStarts::byStandIn, "stand-in", burst));
			}
			Comparison empty(fmt::format("worker-start: {} requests without an answer", waiting), "game thread", Comparison::Layout::Rows);
			results.push_back(alternate(
				std::move(empty), pairs, WarmUp::None, [this] { return measureIn("corvane"); }, [this] { return measureIn("game"); }));
			return results;
		}

	private:
		Comparison besides(WorkerStarts::Make& peer, const char* name, int burst) const
		{
			Comparison empty(
				fmt::format("worker-start: {} requests, {} answers at a time", requests, burst), name, Comparison::Layout::Rows);
			return alternate(
				std::move(empty), pairs, WarmUp::OnePair, [&] { return measureBursts(WorkerStarts::byFirstJob, requests, burst); },
				[&] { return measureBursts(peer, requests, burst); });
		}

		Figures measureIn(const char* which) const { return runSelf(fmt::format("worker-start --waiting {} --side {}", waiting, which)); }

		int requests = 640;
		std::vector<int> bursts = {1, 64};
		int waiting = 500;
		int pairs = 3;
		std::string side;
	};
} // namespace

std::unique_ptr<Workload> makeWorkerStart()
{
	return std::make_unique<WorkerStartWorkload>();
}
