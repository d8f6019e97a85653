#pragma once

#include "RawServer.h"

/** A script that reads a request, says these bytes and closes. */
inline RawServer::Script saying(std::string bytes)
{
	return [bytes = std::move(bytes)](Connection& connection)
	{
		connection.readHead();
		connection.send(bytes);
	};
}

/** The same, with a rest that waits for a gate. */
inline RawServer::Script saying(std::string bytes, Gate& gate, std::string rest = "")
{
	return [&gate, bytes = std::move(bytes), rest = std::move(rest)](Connection& connection)
	{
		connection.readHead();
		connection.send(bytes);
		connection.waitFor(gate);
		connection.send(rest);
	};
}
