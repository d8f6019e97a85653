#pragma once

#include "RawServer.h"

/** A script that reads a request, says these bytes, and the rest when the gate opens, if there is one; then it closes. */
inline RawServer::Script saying(std::string bytes, Gate* gate = nullptr, std::string rest = "")
{
	return [=](Connection& connection)
	{
		connection.readHead();
		connection.send(bytes);
		if (gate)
		{
			connection.waitFor(*gate);
		}
		connection.send(rest);
	};
}
