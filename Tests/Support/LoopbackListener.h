#pragma once

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

/** A socket that listens on a port of 127.0.0.1, one that the system chooses. */
class LoopbackListener
{
public:
	/** @param backlog  below 0 = it has the port and does not listen: whoever connects is refused. */
	explicit LoopbackListener(int backlog = 1024)
	{
		sockaddr_in address{};
		address.sin_family = AF_INET;
		address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
		socklen_t size = sizeof address;
		sockaddr* const raw = reinterpret_cast<sockaddr*>(&address);
		if (::bind(descriptor, raw, size) != 0 || (backlog >= 0 && ::listen(descriptor, backlog) != 0) ||
			::getsockname(descriptor, raw, &size) != 0)
		{
			throw std::system_error(errno, std::generic_category(), "listen");
		}
		port = ntohs(address.sin_port);
	}
	~LoopbackListener() { ::close(descriptor); }
	LoopbackListener(const LoopbackListener&) = delete;
	LoopbackListener& operator=(const LoopbackListener&) = delete;

	std::string authority() const { return "127.0.0.1:" + std::to_string(port); }

	const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
	int port = 0;
};
