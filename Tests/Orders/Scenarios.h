#pragma once

#include "World.h"

#include <string>
#include <vector>

/** Disturbances that are of no interest to a kind of work, or cannot happen to it. */
enum Without : unsigned
{
	NoGraph = 1,
	NoPause = 2,
	NoHandler = 4, // that starts it again
	OfLibrary = NoGraph | NoPause,
	OfNode = NoPause | NoHandler,
	OfTransfer = NoGraph | NoHandler // it holds itself: to let go of it is what a collection does
};

/** One kind of work. */
struct Kind
{
	const char* name;
	void (*play)(World& world);
	/** Looks at what is left when the program has ended; null = at nothing. */
	void (*look)(const World& world);
	/** So few points that every order can be tried, unless it is started twice. */
	bool isSmall;
	unsigned without;
	/** Every start has its outcome, even though the program ends. */
	bool alwaysTells() const { return without == OfTransfer; }
};

std::vector<Kind> requestKinds();
std::vector<Kind> nodeKinds();
std::vector<Kind> transferKinds();
std::vector<Kind> uploadKinds();

/** A kind of work against one disturbance. */
struct Scenario
{
	std::string name;
	Disturbance disturbance;
	Kind kind;
	bool isSmall() const { return kind.isSmall && disturbance != Disturbance::CancelAndAgain; }
};

std::vector<Scenario> scenarios();

/** The files of the last run go. */
void removeFolder();

/** Plays one run and looks at what it leaves. @param isBrief  with little to decide. @return the points it passed. */
std::size_t playOnce(const Scenario& scenario, class Chooser& chooser, bool isBrief);
