#pragma once

#include "Host/HttpService.h"
#include "Modules/ModuleInterface.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct FGameLoopSettings
{
	FHttpSettings http;
	/** The project's directory and the one where relative paths start; empty = the current directory. */
	std::string projectDirectory;
	std::string baseDirectory;
	/** Frees dead objects after every tick instead of now and then: brings mistakes in holding objects to light. */
	bool bCollectAfterEveryTick = false;
};

/**
 * What the engine's main loop is to a game: it starts the modules the program was built with, runs the tasks of the game
 * thread and ends everything in order. The thread that constructs it is the game thread; all functions belong to it. At
 * most one at a time.
 */
class FGameLoop
{
public:
	explicit FGameLoop(const FGameLoopSettings& Settings = {});
	~FGameLoop();
	FGameLoop(const FGameLoop&) = delete;
	FGameLoop& operator=(const FGameLoop&) = delete;

	/** Runs the tasks that are queued now and the tickers that are due; returns at once when there are none. */
	void Tick();

	/**
	 * Ticks until a condition holds.
	 * @param Condition  asked after every tick, and when none comes every 10 ms to 125 ms.
	 * @param Seconds  the time limit.
	 * @return whether it held before the time was over.
	 */
	bool WaitFor(const std::function<bool()>& Condition, double Seconds);

	/**
	 * Ticks until there is neither work nor a queued task.
	 * @param HasPendingWork  whether somebody still works towards a task.
	 * @param Abort  ends the loop early when it says so; may be empty.
	 */
	void RunUntilIdle(const std::function<bool()>& HasPendingWork, const std::function<bool()>& Abort = nullptr);

	/** Frees the objects that nothing holds. */
	void CollectGarbage();

	/** Ends modules, transfers, tasks, objects and threads, in this order. A second call does nothing. */
	void Shutdown();

private:
	void WaitForTasks(std::chrono::steady_clock::time_point Deadline) const;

	const bool bCollectAfterEveryTick;
	std::vector<std::unique_ptr<IModuleInterface>> Modules;
	std::chrono::steady_clock::time_point LastTasks; // or when the waiting began
	bool bRunning = true;
};
