#include "Kit/DroppingServer.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <sys/socket.h>

namespace
{
	bool sendAll(const Descriptor& connection, std::string_view bytes)
	{
		return send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
	}

	/** Reads a request's head. @param bytes  takes it, and what came of the body with it. @return bytes of the head; 0 = no more requests. */
	std::size_t readHead(const Descriptor& connection, std::string& bytes)
	{
		std::array<char, 16384> buffer{};
		std::size_t end;
		while ((end = bytes.find("\r\n\r\n")) == bytes.npos)
		{
			const ssize_t number = recv(connection.get(), buffer.data(), buffer.size(), 0);
			if (number <= 0)
			{
				return 0;
			}
			bytes.append(buffer.data(), static_cast<std::size_t>(number));
		}
		return end + 4;
	}

	std::size_t announcedLength(std::string_view head)
	{
		constexpr std::string_view name = "\r\nContent-Length: ";
		const std::size_t at = head.find(name);
		return at == head.npos ? 0 : std::stoul(std::string(head.substr(at + name.size())));
	}

	/** The kernel drops the bytes: copying them here would slow down the side that is measured. */
	bool dropBytes(const Descriptor& connection, std::size_t number)
	{
		constexpr std::size_t most = 1 << 20;
		static char unused[1];
		while (number > 0)
		{
			const ssize_t dropped = recv(connection.get(), unused, std::min(number, most), MSG_TRUNC);
			if (dropped <= 0)
			{
				return false;
			}
			number -= static_cast<std::size_t>(dropped);
		}
		return true;
	}

	bool answerOne(const Descriptor& connection)
	{
		std::string bytes;
		const std::size_t headBytes = readHead(connection, bytes);
		const std::string_view head = std::string_view(bytes).substr(0, headBytes);
		if (headBytes == 0 || (head.find("Expect: 100") != head.npos && !sendAll(connection, "HTTP/1.1 100 Continue\r\n\r\n")))
		{
			return false;
		}
		const std::size_t length = announcedLength(head);
		return dropBytes(connection, length - std::min(length, bytes.size() - headBytes)) &&
			   sendAll(connection, "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
	}
} // namespace

DroppingServer::DroppingServer()
	: thread([this] { serve(); })
{
}

void DroppingServer::serve() const
{
	for (;;)
	{
		const int accepted = accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
		if (accepted < 0)
		{
			return;
		}
		const Descriptor connection(accepted);
		while (answerOne(connection))
		{
		}
	}
}
