#include "RawServer.h"

#include <algorithm>
#include <array>
#include <netinet/tcp.h>
#include <utility>

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
} // namespace

std::string Connection::readHead()
{
	size_t end;
	while ((end = Unread.find("\r\n\r\n")) == std::string::npos)
	{
		need(fill());
	}
	const std::string head = read(end + 4);
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
	std::string rest = Unread.substr(bytes);
	Unread.resize(bytes);
	return std::exchange(Unread, std::move(rest));
}

bool Connection::fill()
{
	std::array<char, 16384> bytes;
	const ssize_t number = ::recv(Socket, bytes.data(), bytes.size(), 0);
	Unread.append(bytes.data(), static_cast<size_t>(std::max<ssize_t>(number, 0)));
	return number > 0;
}

void Connection::send(std::string_view bytes)
{
	while (!bytes.empty())
	{
		const ssize_t number = ::send(Socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
		need(number > 0);
		bytes.remove_prefix(static_cast<size_t>(number));
	}
}

void Connection::waitForPeer()
{
	while (fill())
	{
		Unread.clear();
	}
}

RawServer::~RawServer()
{
	::shutdown(Listener.descriptor, SHUT_RDWR);
	Acceptor.join();
	{
		const std::scoped_lock lock(Mutex);
		for (const Connection& connection : Connections)
		{
			::shutdown(connection.Socket, SHUT_RDWR);
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
		Connection& connection = Connections.emplace_back(*this, socket);
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
	::close(std::exchange(connection.Socket, -1));
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
