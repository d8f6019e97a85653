#include "RawServer.h"

#include "TlsIdentity.h"

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace
{
	/** Ends a script. */
	struct ConnectionOver
	{
	};

	void need(bool done, const char* what)
	{
		if (!done)
		{
			throw std::runtime_error(what);
		}
	}

	std::shared_ptr<void> makeTlsContext(const TlsIdentity& identity)
	{
		std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
		need(SSL_CTX_use_certificate_file(context.get(), identity.certificateFile.c_str(), SSL_FILETYPE_PEM) == 1 &&
				 SSL_CTX_use_PrivateKey_file(context.get(), identity.keyFile.c_str(), SSL_FILETYPE_PEM) == 1,
			"cannot use the certificate");
		return context;
	}
} // namespace

struct TlsStream
{
	TlsStream(void* context, int socket)
		: Ssl(SSL_new(static_cast<SSL_CTX*>(context)), SSL_free)
	{
		SSL_set_fd(Ssl.get(), socket);
		if (SSL_accept(Ssl.get()) != 1)
		{
			throw ConnectionOver();
		}
	}

	std::unique_ptr<SSL, void (*)(SSL*)> Ssl;
};

void Gate::open()
{
	const std::scoped_lock lock(Mutex);
	Open = true;
	Changed.notify_all();
}

bool Gate::isOpen() const
{
	const std::scoped_lock lock(Mutex);
	return Open;
}

bool Gate::wait(std::stop_token stop)
{
	std::unique_lock lock(Mutex);
	return Changed.wait(lock, stop, [this] { return Open; });
}

Connection::Connection(RawServer& server, int socket, int number)
	: Server(server)
	, Number(number)
	, Socket(socket)
{
}

Connection::~Connection()
{
	close();
}

std::string Connection::readHead()
{
	size_t end;
	while ((end = Unread.find("\r\n\r\n")) == std::string::npos)
	{
		if (!fill())
		{
			throw ConnectionOver();
		}
	}
	const std::string head = Unread.substr(0, end + 4);
	Unread.erase(0, end + 4);
	Server.record(head);
	return head;
}

std::string Connection::read(size_t bytes)
{
	while (Unread.size() < bytes)
	{
		if (!fill())
		{
			throw ConnectionOver();
		}
	}
	const std::string taken = Unread.substr(0, bytes);
	Unread.erase(0, bytes);
	return taken;
}

bool Connection::fill()
{
	char bytes[4096];
	const ssize_t number = Tls ? SSL_read(Tls->Ssl.get(), bytes, sizeof bytes) : ::recv(Socket, bytes, sizeof bytes, 0);
	if (number <= 0)
	{
		return false;
	}
	Unread.append(bytes, static_cast<size_t>(number));
	return true;
}

void Connection::send(std::string_view bytes)
{
	while (!bytes.empty())
	{
		const ssize_t number = Tls ? SSL_write(Tls->Ssl.get(), bytes.data(), static_cast<int>(bytes.size()))
								   : ::send(Socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
		if (number <= 0)
		{
			throw ConnectionOver();
		}
		bytes.remove_prefix(static_cast<size_t>(number));
	}
}

void Connection::closeWrite()
{
	::shutdown(Socket, SHUT_WR);
}

void Connection::reset()
{
	const linger hard{1, 0};
	::setsockopt(Socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
	close();
	throw ConnectionOver();
}

void Connection::waitFor(Gate& gate)
{
	if (!gate.wait(Server.Stop.get_token()))
	{
		throw ConnectionOver();
	}
}

void Connection::waitForPeer()
{
	while (fill())
	{
		Unread.clear();
	}
}

void Connection::shutdownBoth()
{
	const std::scoped_lock lock(SocketMutex);
	if (Socket >= 0)
	{
		::shutdown(Socket, SHUT_RDWR);
	}
}

void Connection::close()
{
	const std::scoped_lock lock(SocketMutex);
	if (Socket >= 0)
	{
		::close(Socket);
		Socket = -1;
	}
}

RawServer::RawServer(Script script, const TlsIdentity* identity)
	: TheScript(std::move(script))
	, TlsContext(identity ? makeTlsContext(*identity) : nullptr)
	, Listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
	std::signal(SIGPIPE, SIG_IGN); // writing TLS to a peer that hung up raises it
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	socklen_t size = sizeof address;
	sockaddr* const raw = reinterpret_cast<sockaddr*>(&address);
	need(::bind(Listener, raw, size) == 0 && ::listen(Listener, 1024) == 0 && ::getsockname(Listener, raw, &size) == 0, "cannot listen");
	Port = ntohs(address.sin_port);
	Acceptor = std::thread([this] { acceptAll(); });
}

RawServer::~RawServer()
{
	Stop.request_stop();
	::shutdown(Listener, SHUT_RDWR);
	Acceptor.join();
	::close(Listener);
	for (Connection& connection : Connections)
	{
		connection.shutdownBoth();
	}
	for (std::thread& thread : Threads)
	{
		thread.join();
	}
}

void RawServer::acceptAll()
{
	for (int number = 0; !Stop.stop_requested(); ++number)
	{
		const int socket = ::accept4(Listener, nullptr, nullptr, SOCK_CLOEXEC);
		if (socket < 0)
		{
			return;
		}
		const int yes = 1;
		::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
		const std::scoped_lock lock(Mutex);
		Connection& connection = Connections.emplace_back(*this, socket, number);
		Threads.emplace_back([this, &connection] { serve(connection); });
	}
}

void RawServer::serve(Connection& connection)
{
	try
	{
		if (TlsContext)
		{
			connection.Tls = std::make_unique<TlsStream>(TlsContext.get(), connection.Socket);
		}
		TheScript(connection);
	}
	catch (const ConnectionOver&)
	{
	}
	connection.close();
}

void RawServer::record(const std::string& head)
{
	const std::scoped_lock lock(Mutex);
	Requests.push_back(head);
}

std::string RawServer::authority() const
{
	return "127.0.0.1:" + std::to_string(Port);
}

std::string RawServer::url(std::string_view path) const
{
	return (TlsContext ? "https://" : "http://") + authority() + std::string(path);
}

std::vector<std::string> RawServer::requests() const
{
	const std::scoped_lock lock(Mutex);
	return Requests;
}

int RawServer::connectionCount() const
{
	const std::scoped_lock lock(Mutex);
	return static_cast<int>(Connections.size());
}

RawServer::Script answering(std::function<std::string(const std::string& head)> respond)
{
	return [respond = std::move(respond)](Connection& connection)
	{
		for (;;)
		{
			connection.send(respond(connection.readHead()));
		}
	};
}

std::string answer(int code, std::string_view body, std::string_view headers)
{
	return "HTTP/1.1 " + std::to_string(code) + " Reason\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
		   std::string(headers) + "\r\n" + std::string(body);
}

std::string targetOf(std::string_view head)
{
	const size_t begin = head.find(' ') + 1;
	return std::string(head.substr(begin, head.find(' ', begin) - begin));
}

std::string firstHeaders(const std::string& authority)
{
	return "Host: " + authority + "\r\nAccept: */*\r\nAccept-Encoding: deflate, gzip, br, zstd\r\n";
}
