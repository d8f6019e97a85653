#pragma once

#include <cstdint>
#include <string>
#include <vector>

/** What this process takes while nothing runs. */
struct Sample
{
	/** Looks now. */
	static Sample take(std::uint64_t requests, std::size_t objects);

	double requests = 0; // so far
	double resident = 0, heap = 0; // bytes; heap = what the program holds of it
	int sockets = 0, files = 0, threads = 0; // open descriptors without sockets
	std::size_t objects = 0;
};

class Meter
{
public:
	void add(const Sample& sample);
	/**
	 * Judges what has come from the tenth part of the run on.
	 * @param inFlight  so many connections to each host, and workers, may be kept for later requests.
	 * @param kept  bytes that are meant to stay.
	 * @return what grows; none = all is flat.
	 */
	std::vector<std::string> findGrowth(int inFlight, int hosts, double kept) const;

private:
	std::vector<Sample> samples;
};
