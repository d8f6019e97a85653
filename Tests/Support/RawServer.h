#pragma once

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
struct TlsStream;

/** Closed until a test opens it; scripts of servers wait for it. Thread: any. */
class Gate
{
public:
	void open();
	/** @return false when stop was requested before the gate was opened. */
	bool wait(std::stop_token stop);
	bool isOpen() const;

private:
	mutable std::mutex Mutex;
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
	~Connection();
	Connection(const Connection&) = delete;
	Connection& operator=(const Connection&) = delete;

	/** Connections of a server count from 0. */
	int number() const { return Number; }

	/** Reads a request up to and including its empty line; the server records it. */
	std::string readHead();
	std::string read(size_t bytes);
	void send(std::string_view bytes);

	/** Tells the peer that no more bytes come; reading goes on. */
	void closeWrite();
	/** Drops the connection so that the peer sees an error instead of an end. Nothing else works after that. */
	void reset();
	void waitFor(Gate& gate);
	/** Reads and drops what comes until the peer hangs up. */
	void waitForPeer();

private:
	friend class RawServer;

	bool fill();
	void shutdownBoth();
	void close();

	RawServer& Server;
	const int Number;
	std::unique_ptr<TlsStream> Tls; // null = plain
	std::string Unread;
	std::mutex SocketMutex; // guards closing against the shutdown by the server's destructor
	int Socket;
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

	/** @param identity  speaks TLS with this certificate when given; outlives the server. */
	explicit RawServer(Script script, const TlsIdentity* identity = nullptr);
	~RawServer();
	RawServer(const RawServer&) = delete;
	RawServer& operator=(const RawServer&) = delete;

	int port() const { return Port; }
	/** "127.0.0.1:port" */
	std::string authority() const;
	std::string url(std::string_view path = "/") const;

	/** The request heads read so far, byte for byte, in the order in which they arrived. Thread: any. */
	std::vector<std::string> requests() const;
	int connectionCount() const;

private:
	friend class Connection;

	void acceptAll();
	void serve(Connection& connection);
	void record(const std::string& head);

	const Script TheScript;
	std::shared_ptr<void> TlsContext; // null = plain
	int Listener = -1;
	int Port = 0;
	std::stop_source Stop;
	mutable std::mutex Mutex; // guards what follows
	std::vector<std::string> Requests;
	std::list<Connection> Connections;
	std::vector<std::thread> Threads;
	std::thread Acceptor;
};

/** A script that answers every request of a connection with what respond makes of its head. */
RawServer::Script answering(std::function<std::string(const std::string& head)> respond);

/** @return a whole answer with a Content-Length. @param headers  lines with their line ends. */
std::string answer(int code, std::string_view body, std::string_view headers = "");

/** What the HTTP layer puts in front of a program's own headers, behind the request line. */
std::string firstHeaders(const std::string& authority);

/** @return the target in a request head: "/a?b" of "GET /a?b HTTP/1.1...". */
std::string targetOf(std::string_view head);
