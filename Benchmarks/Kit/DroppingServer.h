#pragma once

#include "Kit/Sockets.h"

#include <thread>

/** Reads request bodies as fast as they come, drops them and answers 200. One connection at a time, on a thread of its own. */
class DroppingServer
{
public:
	DroppingServer();
	~DroppingServer() { listener.stop(); }

	std::string url() const { return listener.url(); }

private:
	void serve() const;

	Listener listener;
	std::jthread thread; // last: it uses the above
};
