#pragma once

#include "Kit/Comparison.h"

class StopWatch;

/** Rate and CPU time of the requests that were made since a watch began. */
Figures requestFigures(const StopWatch& watch, int requests);

/** The same, with the CPU time of the calling thread, which is the game thread. */
Figures requestFiguresOfGame(const StopWatch& watch, int requests);
