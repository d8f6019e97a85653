#pragma once

#include "Kit/Sockets.h"

#include <atomic>
#include <list>
#include <thread>

/** Takes every connection and request, and answers none. It has a thread of its own. Thread: any. */
class SilentServer
{
public:
	SilentServer();
	~SilentServer();

	std::string url() const { return listener.url(); }
	/** The requests that came since the connections were last dropped. */
	int waiting() const { return numWaiting; }
	/** Closes every connection, soon. */
	void dropConnections();

private:
	void serve();
	void addConnection();
	void readFrom(int connection);

	Listener listener;
	Descriptor wakeUp; // tells the thread to look at what follows
	Descriptor poller;
	std::atomic<bool> isDropping = false;
	std::atomic<bool> isEnding = false;
	std::atomic<int> numWaiting = 0;
	std::list<Descriptor> connections; // server thread only
	std::jthread thread; // last: it uses all of the above
};
