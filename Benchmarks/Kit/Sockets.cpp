#include "Kit/Sockets.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace
{
	void check(int returned)
	{
		if (returned < 0)
		{
			throw std::system_error(errno, std::generic_category());
		}
	}

	std::uint16_t listenOnFreePort(int socket)
	{
		sockaddr_in address{};
		socklen_t size = sizeof(address);
		address.sin_family = AF_INET;
		address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
		check(bind(socket, reinterpret_cast<sockaddr*>(&address), size));
		check(listen(socket, SOMAXCONN));
		check(getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size));
		return ntohs(address.sin_port);
	}
} // namespace

Descriptor::Descriptor(int returned)
	: number(returned)
{
	check(returned);
}

Descriptor::~Descriptor()
{
	if (number >= 0)
	{
		close(number);
	}
}

Descriptor::Descriptor(Descriptor&& other) noexcept
	: number(std::exchange(other.number, -1))
{
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
	std::swap(number, other.number);
	return *this;
}

Listener::Listener()
	: socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
	, port(listenOnFreePort(socket.get()))
{
}

std::string Listener::url() const
{
	return fmt::format("http://127.0.0.1:{}/", port);
}

void Listener::stop() const
{
	shutdown(socket.get(), SHUT_RDWR);
}
