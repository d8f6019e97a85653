#pragma once

#include "Chooser.h"

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <semaphore.h>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/**
 * Lets one thread of a run go on at a time. Threads come to points; there it is decided whose turn it is. Nobody else
 * runs meanwhile, so what a thread does between two points happens as one. Time is that of the run: it passes when
 * everybody waits.
 */
class Schedule
{
public:
	static constexpr double forever = std::numeric_limits<double>::infinity();

	static Schedule& the();

	/** Begins a run; the calling thread has the first turn. */
	void begin(Chooser& inChooser);
	/** Ends it, when all other threads have come to their ends. @return the number of points passed. */
	std::size_t end();
	/** Whether the calling thread belongs to a run. */
	static bool isRunning() { return current != nullptr; }

	/** Another thread may have its turn now. @param object  names what is about to be touched. */
	void point(const char* what, const void* object = nullptr);
	/**
	 * Others have their turns until a condition holds, which only they can bring about, or the time is over.
	 * @return whether it holds.
	 */
	bool waitUntil(const char* what, const void* object, const std::function<bool()>& isReady, double seconds = forever);
	/** Makes a thread; it may have its turn from the next point on. */
	void spawn(const std::string& name, std::function<void()> body);
	/** Lets the run's chooser decide something else. */
	int choose(const char* what, int options);
	/** Seconds since the run began. */
	double now() const { return time; }
	/** Of those, the ones that passed while somebody could go on. */
	double hurried() const { return hurriedTime; }

	/** The calling thread, as a number; the one that began the run is 0. */
	static int self() { return current->number; }

	/** Ends the program if something does not hold: tells what, how to run it again and how it came to it. */
	void expect(bool holds, std::string_view what) { holds ? void() : fail(what); }
	/** Said in front of a failure. */
	std::string title;
	/** Tell how the run went even though nothing is wrong. */
	void printTrace() const;

private:
	/** Not std's, which spins before it sleeps: here somebody else has always much to do. */
	class Turn
	{
	public:
		Turn() { sem_init(&semaphore, 0, 0); }
		void give() { sem_post(&semaphore); }
		void await()
		{
			while (sem_wait(&semaphore) != 0)
			{
			}
		}

	private:
		sem_t semaphore;
	};
	struct Thread
	{
		std::string name;
		int number = 0;
		Turn turn;
		std::function<void()> body;
		const std::function<bool()>* isReady = nullptr; // null = it can go on
		double wakeAt = forever;
		std::thread system;
	};
	struct Step
	{
		int thread;
		const char* what;
		const void* object;
	};

	[[noreturn]] void fail(std::string_view what);
	void note(const char* what, const void* object) { trace.push_back({self(), what, object}); }
	bool canGoOn(const Thread& thread) const { return !thread.isReady || time >= thread.wakeAt || (*thread.isReady)(); }
	Thread& pick(bool selfCanGoOn);
	void pass(Thread& next);
	double letTimePass();
	void live(Thread& thread);

	static inline thread_local Thread* current = nullptr;
	Chooser* chooser = nullptr;
	std::vector<Thread*> threads; // of this run, those that have not ended
	std::vector<std::unique_ptr<Thread>> all; // of all runs
	std::vector<Thread*> spare;
	Thread first;
	std::vector<Step> trace;
	std::map<int, std::string> names;
	double time = 0;
	double hurriedTime = 0;
};
