#include "Kit/StampServer.h"

#include <array>
#include <chrono>
#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace
{
	using Clock = std::chrono::steady_clock;

	std::int64_t nanosecondsNow()
	{
		return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
	}

	bool sendAll(const Descriptor& connection, std::string_view bytes)
	{
		return send(connection.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
	}
} // namespace

StampServer::StampServer(double inPiecesPerSecond, int inPieces)
	: piecesPerSecond(inPiecesPerSecond)
	, pieces(inPieces)
	, thread([this] { serve(); })
{
}

void StampServer::serve() const
{
	for (;;)
	{
		const int accepted = accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
		if (accepted < 0)
		{
			return;
		}
		answer(Descriptor(accepted));
	}
}

void StampServer::answer(const Descriptor& connection) const
{
	constexpr std::string_view head = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n";
	const int on = 1;
	std::array<char, 4096> request{};
	setsockopt(connection.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
	bool goesOn = recv(connection.get(), request.data(), request.size(), 0) > 0 && sendAll(connection, head);
	const Clock::time_point start = Clock::now();
	for (int piece = 1; goesOn && piece <= pieces; ++piece)
	{
		const std::chrono::duration<double> due(piece / piecesPerSecond);
		std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(due));
		goesOn = sendAll(connection, fmt::format("data: {}\n", nanosecondsNow()));
	}
}

void StampReader::take(std::string_view bytes)
{
	constexpr std::size_t prefixBytes = sizeof("data: ") - 1;
	const std::int64_t now = nanosecondsNow();
	unread += bytes;
	for (std::size_t end = unread.find('\n'); end != std::string::npos; end = unread.find('\n'))
	{
		const std::int64_t sent = std::stoll(unread.substr(prefixBytes, end - prefixBytes));
		microseconds.push_back(static_cast<double>(now - sent) * 1e-3);
		unread.erase(0, end + 1);
	}
}
