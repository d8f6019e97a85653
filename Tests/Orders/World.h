#pragma once

#include "CorvaneBPLibrary.h"
#include "GameLoop.h"
#include "Origin.h"
#include "Schedule.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <functional>
#include <set>
#include <string>

/** What happens to a request beside its answer. */
enum class Disturbance
{
	None,
	Cancel,
	CancelAndAgain,
	Collection,
	GraphGone,
	NoThread,
	Pause,
	Unload,
	EndOfProgram,
	/** Started again by the handler of its outcome, in a game that collects all the time. */
	AgainInHandler
};

/** What a scenario does with its work; what its work does not know is null. */
struct Work
{
	std::function<void()> start;
	std::function<void()> cancel;
	std::function<void(bool isOn)> pause = {};
	/** The graph that holds it goes. */
	std::function<void()> letGo = {};
	/** What is cancelled may be a part of it. */
	bool othersGoOn = false;
};

/** A program in one run: its loop, its folder, the server that it asks, and what it is told. */
class World
{
public:
	/** @param inIsBrief  so little is to be decided that every order can be tried. */
	World(const TempDir& inFolder, Disturbance inDisturbance, bool inIsBrief);

	/** Starts, disturbs, and waits for the outcomes. */
	void play(const Work& work);
	/** Counts a start. @return its number. */
	int begin() { return starts++; }
	/** Counts its outcome. @param number  -1 = which start it belongs to cannot be told. */
	void end(int number = -1);
	/** Nothing of the work may be rooted, running or queued any more. */
	void expectNothingLeft();
	void shutDown();
	/** Ends the run when something is not as it must be. */
	void expect(bool holds, const std::string& what) const { Schedule::the().expect(holds, what); }

	UCorvaneBPLibrary& library() const { return *UCorvaneBPLibrary::getCorvaneTarget(); }
	std::string read(const std::string& name) const { return folder.exists(name) ? folder.read(name) : std::string(); }
	/** A file of the folder must not be open, or with "" none. */
	void expectClosed(const std::string& name) const;
	void expectPrefix(const std::string& name) const;
	bool isEnding() const { return disturbance == Disturbance::EndOfProgram; }
	/** Whether the modules may have lost their patience with work that they have to end. */
	bool mayGiveUp() const;

	const int eventsBefore; // of the pool, taken by what earlier runs have given up
	FGameLoop loop;
	const TempDir& folder;
	const Disturbance disturbance;
	const bool isBrief;
	Origin origin;
	int starts = 0;
	int outcomes = 0;
	/** Objects that the modules keep until the program ends. */
	std::size_t lasting = 0;
	bool isPaused = false;

private:
	void until(const std::function<bool()>& condition);
	void letPass();
	/** @return whether anything happened in it. */
	bool frame(double mostSeconds);

	std::set<int> told;
	std::size_t objectsBefore = 0;
	bool isOver = false;
};
