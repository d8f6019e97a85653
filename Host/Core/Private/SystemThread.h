#pragma once

#include <functional>
#include <string>

/** Runs a function on a system thread, one that waits for work if there is one. @return false when the system has none to give. */
bool runOnSystemThread(std::function<void()> Body, std::string Name);
