#pragma once

#include <string>

/**
 * Runs a command of the shell and waits for its end. Throws std::runtime_error when it fails.
 * @return what it printed.
 */
std::string outputOf(const std::string& command);
