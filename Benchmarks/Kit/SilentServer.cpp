#include "Kit/SilentServer.h"

#include <array>
#include <string_view>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace
{
	void watch(const Descriptor& poller, int descriptor)
	{
		epoll_event event{};
		event.events = EPOLLIN;
		event.data.fd = descriptor;
		epoll_ctl(poller.get(), EPOLL_CTL_ADD, descriptor, &event);
	}
} // namespace

SilentServer::SilentServer()
	: wakeUp(eventfd(0, EFD_CLOEXEC))
	, poller(epoll_create1(EPOLL_CLOEXEC))
{
	watch(poller, wakeUp.get());
	watch(poller, listener.get());
	thread = std::jthread([this] { serve(); });
}

SilentServer::~SilentServer()
{
	isEnding = true;
	eventfd_write(wakeUp.get(), 1);
}

void SilentServer::dropConnections()
{
	isDropping = true;
	eventfd_write(wakeUp.get(), 1);
}

void SilentServer::serve()
{
	std::array<epoll_event, 64> events{};
	while (!isEnding)
	{
		const int number = epoll_wait(poller.get(), events.data(), static_cast<int>(events.size()), -1);
		for (int index = 0; index < number; ++index)
		{
			const int ready = events[static_cast<std::size_t>(index)].data.fd;
			if (ready == listener.get())
			{
				addConnection();
			}
			else if (ready != wakeUp.get())
			{
				readFrom(ready);
			}
		}
		if (isDropping.exchange(false)) // after the events, which name connections that have to exist
		{
			eventfd_t ignored = 0;
			eventfd_read(wakeUp.get(), &ignored);
			connections.clear();
			numWaiting = 0;
		}
	}
}

void SilentServer::addConnection()
{
	connections.emplace_back(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
	watch(poller, connections.back().get());
}

void SilentServer::readFrom(int connection)
{
	std::array<char, 4096> bytes{};
	const ssize_t number = recv(connection, bytes.data(), bytes.size(), 0);
	if (number <= 0)
	{
		connections.remove_if([connection](const Descriptor& each) { return each.get() == connection; });
	}
	else if (std::string_view(bytes.data(), static_cast<std::size_t>(number)).ends_with("\r\n\r\n"))
	{
		++numWaiting;
	}
}
