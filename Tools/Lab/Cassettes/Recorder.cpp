#include "Lab/Cassettes/Recorder.h"

#include "Lab/Cassettes/Cassette.h"
#include "Lab/Cassettes/Upstream.h"
#include "Lab/Wire/Answer.h"
#include "Lab/Wire/Socket.h"

#include <array>
#include <condition_variable>
#include <fstream>
#include <poll.h>
#include <set>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>

namespace Lab
{
	namespace
	{
		constexpr std::size_t recordedPiece = 64 << 10;

		bool sendAll(int socket, std::string_view bytes)
		{
			while (!bytes.empty())
			{
				const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
				if (sent <= 0)
				{
					return false;
				}
				bytes.remove_prefix(static_cast<std::size_t>(sent));
			}
			return true;
		}

		bool isOf(std::string_view line, std::string_view name)
		{
			const std::size_t colon = line.find(':');
			return colon != line.npos && equalsIgnoringCase(line.substr(0, colon), name);
		}

		/** The head that the server gets. What follows the head stays. */
		std::string forServer(const std::string& bytes, const ServerPlace& place)
		{
			const std::size_t end = bytes.find("\r\n\r\n") + 2;
			const std::size_t target = bytes.find(' ') + 1;
			std::string made = bytes.substr(0, target) + place.path;
			for (std::size_t line = target, next; line < end; line = next)
			{
				next = bytes.find("\r\n", line) + 2;
				const std::string_view text = std::string_view(bytes).substr(line, next - line);
				made += isOf(text, "Host") || isOf(text, "Connection") || isOf(text, "Keep-Alive") ? "" : text;
			}
			return made + "Host: " + place.authority + "\r\nConnection: close" + bytes.substr(end - 2);
		}
	} // namespace

	class Recorder::Relay
	{
	public:
		explicit Relay(const RecorderOptions& inOptions);
		~Relay();

		int count() const
		{
			const std::scoped_lock lock(mutex);
			return numExchanges;
		}

		const Descriptor listener;
		const int port;

	private:
		void acceptAll();
		void serve(Descriptor client);
		std::string readHead(int client);
		void pass(int client, Upstream& server, RecordedExchange& exchange);
		bool passRequest(int client, Upstream& server, RecordedExchange& exchange);
		/** @return bytes; 0 = the end, less = an error. */
		int passAnswer(int client, Upstream& server, RecordedExchange& exchange);
		void keep(RecordedExchange exchange);
		/** @return the first of the two that has something to say; -1 = the relay ends. */
		int waitFor(int one, int other = -1);

		const RecorderOptions options;
		const ServerPlace place;
		const Descriptor ending; // readable when the relay ends
		mutable std::mutex mutex; // guards what follows
		std::condition_variable changed;
		std::ofstream file;
		int numExchanges = 0;
		int numThreads = 0;
		std::thread thread;
	};

	Recorder::Relay::Relay(const RecorderOptions& inOptions)
		: listener(listenOn(inOptions.address, inOptions.port))
		, port(portOf(listener))
		, options(inOptions)
		, place(parseServer(options.to))
		, ending(::eventfd(0, EFD_CLOEXEC), "eventfd")
		, file(options.file, std::ios::binary | std::ios::trunc)
	{
		if (!(file << cassetteHead << "# of " << options.to << '\n' << std::flush))
		{
			throw std::system_error(errno, std::generic_category(), options.file);
		}
		thread = std::thread([this] { acceptAll(); });
	}

	Recorder::Relay::~Relay()
	{
		::eventfd_write(ending.get(), 1);
		thread.join();
		std::unique_lock lock(mutex);
		changed.wait(lock, [this] { return numThreads == 0; });
	}

	int Recorder::Relay::waitFor(int one, int other)
	{
		std::array<pollfd, 3> waited{{{ending.get(), POLLIN, 0}, {one, POLLIN, 0}, {other, POLLIN, 0}}};
		while (::poll(waited.data(), waited.size(), -1) < 0 && errno == EINTR)
		{
		}
		if (waited[0].revents)
		{
			return -1;
		}
		return waited[1].revents ? one : other;
	}

	void Recorder::Relay::acceptAll()
	{
		surviveBrokenPipes();
		while (waitFor(listener.get()) >= 0)
		{
			const int accepted = ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC);
			if (accepted < 0)
			{
				continue;
			}
			{
				const std::scoped_lock lock(mutex);
				++numThreads;
			}
			std::thread(
				[this, accepted]
				{
					serve(Descriptor(accepted, "accept"));
					const std::scoped_lock lock(mutex);
					--numThreads;
					changed.notify_all();
				})
				.detach();
		}
	}

	void Recorder::Relay::serve(Descriptor client)
	{
		RecordedExchange exchange;
		exchange.request = readHead(client.get());
		if (exchange.request.empty())
		{
			return;
		}
		try
		{
			Upstream server(place);
			pass(client.get(), server, exchange);
			keep(std::move(exchange));
		}
		catch (const std::exception& error)
		{
			const std::string text = std::string(error.what()) + '\n';
			sendAll(client.get(), "HTTP/1.1 502 Bad Gateway\r\nConnection: close\r\nContent-Type: text/plain\r\nContent-Length: " +
									  std::to_string(text.size()) + "\r\n\r\n" + text);
			if (options.complain)
			{
				options.complain(error.what());
			}
		}
	}

	/** @return the head and what came of the body with it; empty when none came. */
	std::string Recorder::Relay::readHead(int client)
	{
		std::array<char, recordedPiece> room;
		std::string bytes;
		while (bytes.find("\r\n\r\n") == bytes.npos)
		{
			const ssize_t number = waitFor(client) < 0 ? 0 : ::recv(client, room.data(), room.size(), 0);
			if (number <= 0)
			{
				return {};
			}
			bytes.append(room.data(), static_cast<std::size_t>(number));
		}
		return bytes;
	}

	void Recorder::Relay::pass(int client, Upstream& server, RecordedExchange& exchange)
	{
		Clock::time_point last = Clock::now();
		server.write(forServer(exchange.request, place));
		bool listensToClient = true;
		for (;;)
		{
			const int ready = server.hasBytes() ? server.number() : waitFor(server.number(), listensToClient ? client : -1);
			if (ready < 0)
			{
				return;
			}
			if (ready == client)
			{
				listensToClient = passRequest(client, server, exchange);
				continue;
			}
			const int number = passAnswer(client, server, exchange);
			if (number <= 0)
			{
				exchange.answer.end = number == 0 ? RawEnd::Close : RawEnd::Reset;
				return;
			}
			exchange.answer.pieces.back().pause = Clock::now() - std::exchange(last, Clock::now());
		}
	}

	bool Recorder::Relay::passRequest(int client, Upstream& server, RecordedExchange& exchange)
	{
		std::array<char, recordedPiece> room;
		const ssize_t number = ::recv(client, room.data(), room.size(), 0);
		const std::string_view bytes(room.data(), static_cast<std::size_t>(std::max<ssize_t>(0, number)));
		exchange.request += bytes;
		return number > 0 && server.write(bytes);
	}

	int Recorder::Relay::passAnswer(int client, Upstream& server, RecordedExchange& exchange)
	{
		std::array<char, recordedPiece> room;
		const int number = server.read(room.data(), static_cast<int>(room.size()));
		if (number <= 0)
		{
			return number;
		}
		const std::string_view bytes(room.data(), static_cast<std::size_t>(number));
		exchange.answer.pieces.push_back({{}, std::string(bytes)});
		return sendAll(client, bytes) ? number : 0; // without a reader, what has come is the exchange
	}

	void Recorder::Relay::keep(RecordedExchange exchange)
	{
		if (!options.keepsSecrets)
		{
			removeSecrets(exchange);
		}
		const std::scoped_lock lock(mutex);
		file << print(exchange) << std::flush;
		++numExchanges;
	}

	Recorder::Recorder(const RecorderOptions& options)
		: relay(std::make_unique<Relay>(options))
	{
	}

	Recorder::~Recorder() = default;

	std::string Recorder::url(const std::string& path) const
	{
		return "http://127.0.0.1:" + std::to_string(relay->port) + path;
	}

	int Recorder::count() const
	{
		return relay->count();
	}
} // namespace Lab
