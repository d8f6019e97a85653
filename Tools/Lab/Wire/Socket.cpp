#include "Lab/Wire/Socket.h"

#include "Lab/Wire/Tls.h"

#include <algorithm>
#include <arpa/inet.h>
#include <climits>
#include <csignal>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <stdexcept>
#include <sys/socket.h>

namespace Lab
{
	namespace
	{
		Socket::Result resultOf(ssize_t returned)
		{
			if (returned > 0)
			{
				return {Socket::Outcome::Good, static_cast<std::size_t>(returned)};
			}
			const bool isLater = returned < 0 && (errno == EAGAIN || errno == EINTR);
			return {isLater ? Socket::Outcome::Later : Socket::Outcome::Over};
		}

		int lengthFor(std::size_t bytes)
		{
			return static_cast<int>(std::min<std::size_t>(bytes, INT_MAX));
		}
	} // namespace

	Descriptor listenOn(const std::string& address, int port)
	{
		sockaddr_in place{};
		place.sin_family = AF_INET;
		place.sin_port = htons(static_cast<std::uint16_t>(port));
		if (inet_pton(AF_INET, address.c_str(), &place.sin_addr) != 1)
		{
			throw std::invalid_argument(address + " is no IPv4 address");
		}
		const std::string what = address + ':' + std::to_string(port);
		Descriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), what);
		const int on = 1;
		::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
		check(::bind(listener.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place), what);
		check(::listen(listener.get(), SOMAXCONN), what);
		return listener;
	}

	int portOf(const Descriptor& listener)
	{
		sockaddr_in place{};
		socklen_t size = sizeof place;
		check(::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&place), &size), "port");
		return ntohs(place.sin_port);
	}

	void surviveBrokenPipes()
	{
		sigset_t broken;
		sigemptyset(&broken);
		sigaddset(&broken, SIGPIPE);
		pthread_sigmask(SIG_BLOCK, &broken, nullptr);
	}

	Socket::Socket(Descriptor accepted, const TlsIdentity* identity)
		: descriptor(std::move(accepted))
	{
		const int on = 1;
		::setsockopt(descriptor.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
		if (identity)
		{
			tls.reset(SSL_new(identity->serverContext()), SSL_free);
			SSL_set_fd(tls.get(), descriptor.get());
			SSL_set_accept_state(tls.get());
		}
	}

	Socket::Result Socket::tlsResult(int returned)
	{
		if (returned > 0)
		{
			return {Outcome::Good, static_cast<std::size_t>(returned)};
		}
		const int error = SSL_get_error(tls.get(), returned);
		ERR_clear_error();
		return {error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE ? Outcome::Later : Outcome::Over};
	}

	Socket::Result Socket::read(char* room, std::size_t most)
	{
		return tls ? tlsResult(SSL_read(tls.get(), room, lengthFor(most))) : resultOf(::recv(descriptor.get(), room, most, 0));
	}

	Socket::Result Socket::write(std::string_view bytes)
	{
		if (bytes.empty())
		{
			return {Outcome::Good};
		}
		return tls ? tlsResult(SSL_write(tls.get(), bytes.data(), lengthFor(bytes.size())))
				   : resultOf(::send(descriptor.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL));
	}

	Socket::Result Socket::drop(std::size_t most)
	{
		static thread_local char unused[64 * 1024];
		return resultOf(::recv(descriptor.get(), unused, std::min(most, sizeof unused), 0));
	}

	void Socket::endWriting()
	{
		if (tls)
		{
			SSL_shutdown(tls.get());
			ERR_clear_error();
		}
		::shutdown(descriptor.get(), SHUT_WR);
	}

	void Socket::resetAtClose()
	{
		const linger none{1, 0};
		::setsockopt(descriptor.get(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
	}
} // namespace Lab
