#pragma once

#include "LoopbackListener.h"

#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

class RawServer;

/**
 * One accepted connection as the script of a RawServer sees it. A call that cannot go on, because the peer hung up or
 * the server is being destroyed, ends the script with an exception that the server expects.
 */
class Connection
{
public:
	Connection(RawServer& server, int socket)
		: Server(server)
		, Socket(socket)
	{
	}

	/** Reads a request up to and including its empty line; the server records it. */
	std::string readHead();
	/** Reads a body as long as this head says; the server records it. */
	std::string readBody(std::string_view head);
	std::string read(size_t bytes);
	void send(std::string_view bytes);
	/** Reads and drops what comes until the peer hangs up. */
	void waitForPeer();

private:
	friend class RawServer;

	bool fill();

	RawServer& Server;
	int Socket; // -1 = closed; guarded by the server against its destructor
	std::string Unread;
};

/**
 * An origin on a free port of 127.0.0.1 for what no behaviour of the lab does: its script reads and sends exactly the bytes
 * that it wants. Each connection runs the script on a thread of its own and is closed when the script ends. The destructor
 * cuts what is still open.
 */
class RawServer
{
public:
	using Script = std::function<void(Connection&)>;

	explicit RawServer(Script script)
		: TheScript(std::move(script))
	{
	}
	~RawServer();
	RawServer(const RawServer&) = delete;
	RawServer& operator=(const RawServer&) = delete;

	/** "127.0.0.1:port" */
	std::string authority() const { return Listener.authority(); }
	std::string url(std::string_view path = "/") const { return "http://" + authority() + std::string(path); }

	/** The request heads, and the bodies, read so far, byte for byte, in the order in which they ended. Thread: any. */
	std::vector<std::string> requests() const
	{
		const std::scoped_lock lock(Mutex);
		return Heads;
	}
	std::vector<std::string> bodies() const
	{
		const std::scoped_lock lock(Mutex);
		return Bodies;
	}
	int connectionCount() const
	{
		const std::scoped_lock lock(Mutex);
		return static_cast<int>(Connections.size());
	}

private:
	friend class Connection;

	void acceptAll();
	void serve(Connection& connection);

	const Script TheScript;
	const LoopbackListener Listener;
	mutable std::mutex Mutex; // guards what follows
	std::vector<std::string> Heads;
	std::vector<std::string> Bodies;
	std::list<Connection> Connections;
	std::vector<std::jthread> Threads;
	std::jthread Acceptor{[this] { acceptAll(); }}; // last: it uses all of the above
};

/** A script that reads every request of a connection with its body, and answers what respond makes of its head. */
RawServer::Script answering(std::function<std::string(const std::string& head)> respond);

/** @return a whole answer with a Content-Length. @param headers  lines with their line ends. */
std::string answer(int code, std::string_view body, std::string_view headers = "");

/** @return the target in a request head: "/a?b" of "GET /a?b HTTP/1.1...". */
std::string targetOf(std::string_view head);

/** @param name  as it is spelt in the head. @return the value of a header; empty when absent. */
std::string headerOf(std::string_view head, const std::string& name);
