#pragma once

#include "Kit/Sockets.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/**
 * Answers each connection's request with a body that comes in small pieces at a steady rate; each piece is a line that
 * tells when it was sent. One connection at a time, on a thread of its own.
 */
class StampServer
{
public:
	/** @param inPiecesPerSecond, inPieces  of one answer. */
	StampServer(double inPiecesPerSecond, int inPieces);
	~StampServer() { listener.stop(); }

	std::string url() const { return listener.url(); }

private:
	void serve() const;
	void answer(const Descriptor& connection) const;

	const double piecesPerSecond;
	const int pieces;
	Listener listener;
	std::jthread thread; // last: it uses all of the above
};

/** Reads the lines of a StampServer. Thread: one at a time. */
class StampReader
{
public:
	/** Takes the next bytes of the body, cut anywhere, at the moment of their arrival. */
	void take(std::string_view bytes);
	/** Microseconds from sending to arrival, one for each line so far. */
	const std::vector<double>& latencies() const { return microseconds; }

private:
	std::string unread;
	std::vector<double> microseconds;
};
