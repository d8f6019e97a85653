#include "RawServer.h"

#include "TlsIdentity.h"

#include <algorithm>
#include <csignal>
#include <netinet/tcp.h>
#include <openssl/ssl.h>

namespace
{
	/** Ends a script. */
	struct ConnectionOver
	{
	};

	void need(bool goesOn)
	{
		if (!goesOn)
		{
			throw ConnectionOver();
		}
	}

	std::shared_ptr<SSL_CTX> makeTls(const TlsIdentity& identity)
	{
		std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
		SSL_CTX_use_certificate_file(context.get(), identity.certificateFile.c_str(), SSL_FILETYPE_PEM);
		SSL_CTX_use_PrivateKey_file(context.get(), identity.keyFile.c_str(), SSL_FILETYPE_PEM);
		return context;
	}

	BIO* makeStream(SSL_CTX* tls, int socket)
	{
		BIO* const plain = BIO_new_socket(socket, BIO_CLOSE);
		return tls ? BIO_push(BIO_new_ssl(tls, 0), plain) : plain;
	}
} // namespace

Connection::Connection(RawServer& server, int socket, int number)
	: Server(server)
	, Number(number)
	, Socket(socket)
	, Stream(makeStream(server.Tls.get(), socket), BIO_free_all)
{
}

std::string Connection::readHead()
{
	size_t end;
	while ((end = Unread.find("\r\n\r\n")) == std::string::npos)
	{
		need(fill());
	}
	const std::string head = take(end + 4);
	const std::scoped_lock lock(Server.Mutex);
	return Server.Heads.emplace_back(head);
}

std::string Connection::readBody(std::string_view head)
{
	const std::string length = headerOf(head, "Content-Length");
	const std::string body = read(length.empty() ? 0 : std::stoul(length));
	const std::scoped_lock lock(Server.Mutex);
	return Server.Bodies.emplace_back(body);
}

std::string Connection::read(size_t bytes)
{
	while (Unread.size() < bytes)
	{
		need(fill());
	}
	return take(bytes);
}

std::string Connection::take(size_t bytes)
{
	std::string taken = Unread.substr(0, bytes);
	Unread.erase(0, bytes);
	return taken;
}

bool Connection::fill()
{
	char bytes[16384];
	const int number = BIO_read(Stream.get(), bytes, sizeof bytes);
	Unread.append(bytes, static_cast<size_t>(std::max(number, 0)));
	return number > 0;
}

void Connection::send(std::string_view bytes)
{
	while (!bytes.empty())
	{
		const int number = BIO_write(Stream.get(), bytes.data(), static_cast<int>(bytes.size()));
		need(number > 0);
		bytes.remove_prefix(static_cast<size_t>(number));
	}
}

void Connection::reset()
{
	const linger hard{1, 0};
	::setsockopt(Socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
	throw ConnectionOver();
}

void Connection::waitFor(Gate& gate)
{
	need(gate.wait(Server.Stop.get_token()));
}

void Connection::waitForPeer()
{
	while (fill())
	{
		Unread.clear();
	}
}

RawServer::RawServer(Script script, const TlsIdentity* identity)
	: TheScript(std::move(script))
	, Tls(identity ? makeTls(*identity) : nullptr)
{
	std::signal(SIGPIPE, SIG_IGN); // writing to a peer that hung up raises it
	Acceptor = std::thread([this] { acceptAll(); });
}

RawServer::~RawServer()
{
	Stop.request_stop();
	::shutdown(Listener.descriptor, SHUT_RDWR);
	Acceptor.join();
	{
		const std::scoped_lock lock(Mutex);
		for (const Connection& connection : Connections)
		{
			::shutdown(connection.Stream ? connection.Socket : -1, SHUT_RDWR);
		}
	}
	Threads.clear();
}

void RawServer::acceptAll()
{
	for (int socket; (socket = ::accept4(Listener.descriptor, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;)
	{
		const int yes = 1;
		::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
		const std::scoped_lock lock(Mutex);
		Connection& connection = Connections.emplace_back(*this, socket, static_cast<int>(Connections.size()));
		Threads.emplace_back([this, &connection] { serve(connection); });
	}
}

void RawServer::serve(Connection& connection)
{
	try
	{
		TheScript(connection);
	}
	catch (const ConnectionOver&)
	{
	}
	const std::scoped_lock lock(Mutex);
	connection.Stream.reset();
}

std::string RawServer::url(std::string_view path) const
{
	return (Tls ? "https://" : "http://") + authority() + std::string(path);
}

RawServer::Script answering(std::function<std::string(const std::string& head)> respond)
{
	return [respond = std::move(respond)](Connection& connection)
	{
		for (;;)
		{
			const std::string head = connection.readHead();
			connection.readBody(head);
			connection.send(respond(head));
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

std::string headerOf(std::string_view head, const std::string& name)
{
	const size_t line = head.find("\r\n" + name + ": ");
	const size_t begin = line + name.size() + 4;
	return line == head.npos ? "" : std::string(head.substr(begin, head.find("\r\n", begin) - begin));
}
