#pragma once

#include "Kit/Comparison.h"

#include <string>

/**
 * Runs this program again, in a fresh process, and waits for its end. Throws std::runtime_error when it fails.
 * @param arguments  without anything that a shell would treat specially.
 * @return what it gave to printForParent.
 */
Figures runSelf(const std::string& arguments);

/** In such a process: hands the figures over, as the only thing that it prints. */
void printForParent(const Figures& figures);
