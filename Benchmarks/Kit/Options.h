#pragma once

namespace CLI
{
	class App;
}

/** Adds --pairs, the number of pairs of runs. @param pairs  its value, holding the default. @param how  the help text. */
void addPairs(CLI::App& command, int& pairs, const char* how);
