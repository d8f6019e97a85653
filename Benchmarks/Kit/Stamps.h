#pragma once

#include "Lab/Plans/Behaviour.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/** A body that comes in small pieces at a steady rate; each piece is an event that tells when it was sent. */
Lab::Behaviour stamps(double piecesPerSecond, int pieces);

/** Reads the lines of such a body. Thread: one at a time. */
class StampReader
{
public:
	/** Takes the next bytes of the body, cut anywhere, at the moment of their arrival. */
	void take(std::string_view bytes);
	/** The same of a line that was read already. @param sent  what it told. */
	void takeStamp(std::int64_t sent);
	/** Microseconds from sending to arrival, one for each line so far. */
	const std::vector<double>& latencies() const { return microseconds; }

private:
	std::string unread;
	std::vector<double> microseconds;
};
