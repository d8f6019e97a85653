#pragma once

#include <cstdint>
#include <string>
#include <vector>

/** What this process takes while nothing runs. */
struct Sample
{
	/** Looks now, and prints it. */
	static Sample take(std::uint64_t requests, std::size_t objects);

	double requests = 0; // so far
	double resident = 0, heap = 0; // bytes; heap = what the program holds of it
	int sockets = 0, files = 0, threads = 0; // open descriptors without sockets
	std::size_t objects = 0;
};

/**
 * Judges what has come from the tenth part of the run on.
 * @param inFlight  so many connections to each host, and workers, may be kept for later requests.
 * @param kept  bytes that are meant to stay.
 * @return what grows; none = all is flat.
 */
std::vector<std::string> findGrowth(const std::vector<Sample>& samples, int inFlight, int hosts, double kept);
