#pragma once

#include "LoopbackListener.h"

#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

class RawServer;
class TlsIdentity;

/** Closed until a test opens it; scripts of servers wait for it. Thread: any. */
class Gate
{
public:
	void open()
	{
		const std::scoped_lock lock(Mutex);
		Open = true;
		Changed.notify_all();
	}
	/** @return false when stop was requested before the gate was opened. */
	bool wait(std::stop_token stop)
	{
		std::unique_lock lock(Mutex);
		return Changed.wait(lock, stop, [this] { return Open; });
	}
	bool isOpen() const
	{
		const std::scoped_lock lock(Mutex);
		return Open;
	}

private:
	mutable std::mutex Mutex; // guards what follows
	std::condition_variable_any Changed;
	bool Open = false;
};

/**
 * One accepted connection as the script of a RawServer sees it. A call that cannot go on, because the peer hung up or
 * the server is being destroyed, ends the script with an exception that the server expects.
 */
class Connection
{
public:
	Connection(RawServer& server, int socket, int number);

	/** Connections of a server count from 0. */
	int number() const { return Number; }

	/** Reads a request up to and including its empty line; the server records it. */
	std::string readHead();
	/** Reads a body as long as this head says; the server records it. */
	std::string readBody(std::string_view head);
	std::string read(size_t bytes);
	void send(std::string_view bytes);

	/** Tells the peer that no more bytes come; reading goes on. */
	void closeWrite() { ::shutdown(Socket, SHUT_WR); }
	/** Ends the script so that the peer sees an error instead of an end. */
	[[noreturn]] void reset();
	void waitFor(Gate& gate);
	/** Reads and drops what comes until the peer hangs up. */
	void waitForPeer();

private:
	friend class RawServer;

	bool fill();
	std::string take(size_t bytes);

	RawServer& Server;
	const int Number;
	const int Socket;
	std::shared_ptr<struct bio_st> Stream; // null = closed; guarded by the server against its destructor
	std::string Unread;
};

/**
 * An origin on a free port of 127.0.0.1 that speaks exactly the bytes its script sends, so that requests can be compared
 * byte for byte and faults be made at will. Each connection runs the script on a thread of its own and is closed when the
 * script ends. The destructor cuts what is still open.
 */
class RawServer
{
public:
	using Script = std::function<void(Connection&)>;

	/** @param identity  speaks TLS with this certificate when given. */
	explicit RawServer(Script script, const TlsIdentity* identity = nullptr);
	~RawServer();
	RawServer(const RawServer&) = delete;
	RawServer& operator=(const RawServer&) = delete;

	int port() const { return Listener.port; }
	/** "127.0.0.1:port" */
	std::string authority() const { return Listener.authority(); }
	std::string url(std::string_view path = "/") const;

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
	const std::shared_ptr<struct ssl_ctx_st> Tls; // null = plain
	const LoopbackListener Listener;
	std::stop_source Stop;
	mutable std::mutex Mutex; // guards what follows
	std::vector<std::string> Heads;
	std::vector<std::string> Bodies;
	std::list<Connection> Connections;
	std::vector<std::jthread> Threads;
	std::thread Acceptor;
};

/** A script that reads every request of a connection with its body, and answers what respond makes of its head. */
RawServer::Script answering(std::function<std::string(const std::string& head)> respond);

/** @return a whole answer with a Content-Length. @param headers  lines with their line ends. */
std::string answer(int code, std::string_view body, std::string_view headers = "");

/** @return the target in a request head: "/a?b" of "GET /a?b HTTP/1.1...". */
std::string targetOf(std::string_view head);

/** @param name  as it is spelt in the head. @return the value of a header; empty when absent. */
std::string headerOf(std::string_view head, const std::string& name);
