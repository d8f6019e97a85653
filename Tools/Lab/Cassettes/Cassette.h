#pragma once

#include "Lab/Plans/Behaviour.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace Lab
{
	/** What passed between a client and a server for one request. */
	struct RecordedExchange
	{
		std::string request; // its bytes, with the body
		RawAnswer answer; // piece by piece, as they came; the first pause is from the request's head on
	};

	/** Recorded exchanges in the order in which they ended. */
	using Cassette = std::vector<RecordedExchange>;

	/**
	 * The first line of a cassette. What it looks like: "request" begins an exchange; lines with ">" hold bytes of the request,
	 * those with "<" bytes of the answer; "@ 12.5" begins a piece of the answer, that many milliseconds after the piece before;
	 * "end close" or "end reset" ends the exchange. In bytes, \r, \n, \t, \\ and \xHH stand for what cannot be seen; the end of a
	 * line stands for nothing. Empty lines and those with "#" say nothing.
	 */
	constexpr const char* cassetteHead = "corvane cassette 1\n";

	/** @return the lines of one exchange. */
	std::string print(const RecordedExchange& exchange);
	/** Throws std::invalid_argument with the number of the line that is wrong. */
	Cassette parseCassette(std::istream& text);
	/** The same from a file. Throws std::runtime_error when it cannot be read. */
	Cassette loadCassette(const std::string& path);

	/** @return "GET /path?query" of the bytes of a request. */
	std::string requestLineOf(std::string_view request);

	/**
	 * Puts "(removed)" in place of what lets somebody in: values of headers and of the query whose names speak of authorization,
	 * cookies, tokens, keys, secrets, signatures, sessions, passwords or credentials. Bodies stay as they are.
	 */
	void removeSecrets(RecordedExchange& exchange);

	/**
	 * Answers as a cassette has it: the first time that a request of a method and target comes with what the first recorded one got, and
	 * so on, the last one again and again; what was not recorded with 404.
	 * @param speed  2 = pauses are half as long; 0 = there are none.
	 */
	Behaviour replay(Cassette cassette, double speed = 1);
} // namespace Lab
