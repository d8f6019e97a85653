#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

/**
 * Runs this program again, in a fresh process, and waits for its end. Throws std::runtime_error when it fails.
 * @param arguments  without anything that a shell would treat specially.
 * @return what it printed, read as JSON.
 */
nlohmann::json runSelf(const std::string& arguments);
