#include "Kit/Options.h"

#include <CLI/CLI.hpp>

void addPairs(CLI::App& command, int& pairs, const char* how)
{
	command.add_option("--pairs", pairs, how)->capture_default_str()->check(CLI::PositiveNumber);
}
