#include "Lab/Origin.h"

#include "Lab/Wire/Connection.h"
#include "Lab/Wire/Tls.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <thread>
#include <unordered_map>

namespace Lab
{
	namespace
	{
		constexpr std::uint64_t listenerKey = 0; // connections count from 1

		/** What is said of which place. */
		struct Places
		{
			std::unordered_map<std::string, Behaviour> exact;
			std::vector<std::pair<std::string, Behaviour>> beginnings;

			void set(const std::string& place, Behaviour behaviour)
			{
				if (!place.ends_with('*'))
				{
					exact.insert_or_assign(place, std::move(behaviour));
					return;
				}
				const std::string beginning = place.substr(0, place.size() - 1);
				std::erase_if(beginnings, [&](const auto& other) { return other.first == beginning; });
				beginnings.emplace_back(beginning, std::move(behaviour));
				std::stable_sort(
					beginnings.begin(), beginnings.end(), [](const auto& a, const auto& b) { return a.first.size() > b.first.size(); });
			}

			/** What is said of a method counts before what is said of all, and a whole path before the begin of one. */
			const Behaviour* find(const std::string& method, const std::string& path) const
			{
				const std::string both = method + ' ' + path;
				for (const std::string& place : {both, path})
				{
					const auto found = exact.find(place);
					if (found != exact.end())
					{
						return &found->second;
					}
				}
				const auto beginning = std::find_if(beginnings.begin(), beginnings.end(),
					[&](const auto& each) { return path.starts_with(each.first) || both.starts_with(each.first); });
				return beginning == beginnings.end() ? nullptr : &beginning->second;
			}
		};
	} // namespace

	class Origin::Server : public Service
	{
	public:
		explicit Server(const OriginOptions& inOptions)
			: Service(inOptions.keepsLog)
			, options(inOptions)
			, identity(options.usesTls ? std::make_unique<TlsIdentity>() : nullptr)
			, listener(listenOn(options.address, options.port))
			, port(portOf(listener))
		{
			loop->watch(listener.get(), listenerKey, EPOLLIN);
			thread = std::thread(
				[this]
				{
					surviveBrokenPipes();
					loop->run([this](std::uint64_t key, std::uint32_t events) { handle(key, events); });
					connections.clear();
				});
		}
		~Server() override
		{
			loop->stop();
			thread.join();
		}

		Behaviour admit(Request& request) override;
		Plan plan(const Behaviour& behaviour, const Request& request) override;
		void forget();

		const OriginOptions options;
		const std::unique_ptr<TlsIdentity> identity; // null = plain
		const Descriptor listener;
		const int port;
		std::unordered_map<std::uint64_t, std::unique_ptr<Connection>> connections; // loop's thread only
		std::atomic<std::uint64_t> lastConnection = listenerKey;
		std::atomic<std::uint64_t> lastRequest = 0;
		std::mutex mutex; // guards what follows
		Places places;

	private:
		void handle(std::uint64_t key, std::uint32_t events);
		void acceptAll();
		Behaviour ownLog();

		std::unordered_map<std::string, int> visits; // of "METHOD target"
		std::thread thread; // last: it uses all of the above
	};

	void Origin::Server::handle(std::uint64_t key, std::uint32_t events)
	{
		if (key == listenerKey)
		{
			return acceptAll();
		}
		const auto found = connections.find(key);
		if (found == connections.end())
		{
			return;
		}
		if (events == Loop::released)
		{
			found->second->release();
		}
		else
		{
			found->second->wake(events);
		}
		if (found->second->isOver())
		{
			connections.erase(found);
		}
	}

	void Origin::Server::acceptAll()
	{
		for (;;)
		{
			const int accepted = ::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
			if (accepted < 0)
			{
				return;
			}
			const std::uint64_t key = ++lastConnection;
			connections[key] = std::make_unique<Connection>(*this, key, Socket(Descriptor(accepted, "accept"), identity.get()));
		}
	}

	Behaviour Origin::Server::admit(Request& request)
	{
		const std::string path(request.path());
		if (path == "/lab/log")
		{
			return ownLog();
		}
		request.number = ++lastRequest;
		request.visit = ++visits[request.method + ' ' + request.target];
		const std::scoped_lock lock(mutex);
		const Behaviour* const found = places.find(request.method, path);
		return found ? *found
					 : Behaviour(
						   [](const Request& asked, Plan& plan)
						   {
							   plan.status = 404;
							   plan.setText("Nothing is said of " + asked.target + '\n');
						   });
	}

	Plan Origin::Server::plan(const Behaviour& behaviour, const Request& request)
	{
		Plan plan;
		try
		{
			behaviour.answer(request, plan);
		}
		catch (const std::exception& error)
		{
			plan = {};
			plan.status = 500;
			plan.setText(std::string(error.what()) + '\n');
			if (options.complain)
			{
				options.complain(error.what());
			}
		}
		return plan;
	}

	Behaviour Origin::Server::ownLog()
	{
		return Behaviour(
			[this](const Request& request, Plan& plan)
			{
				const std::string text = toJson(log.exchanges()).dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
				plan.setText(text + '\n', "application/json");
				if (request.method == "DELETE")
				{
					log.clear();
					visits.clear();
				}
			});
	}

	Origin::Origin(const OriginOptions& options)
		: server(std::make_unique<Server>(options))
	{
	}

	Origin::~Origin() = default;

	Origin& Origin::setPlace(const std::string& place, Behaviour behaviour)
	{
		const std::scoped_lock lock(server->mutex);
		server->places.set(place, std::move(behaviour));
		return *this;
	}

	int Origin::port() const
	{
		return server->port;
	}

	std::string Origin::authority() const
	{
		return "127.0.0.1:" + std::to_string(server->port);
	}

	std::string Origin::url(const std::string& path) const
	{
		return (server->identity ? "https://" : "http://") + authority() + path;
	}

	std::string Origin::certificate() const
	{
		return server->identity ? server->identity->certificate() : "";
	}

	std::vector<Exchange> Origin::log() const
	{
		return server->log.exchanges();
	}

	std::uint64_t Origin::requests() const
	{
		return server->lastRequest;
	}

	std::uint64_t Origin::connections() const
	{
		return server->lastConnection;
	}

	int Origin::running() const
	{
		return server->log.running();
	}

	void Origin::dropConnections()
	{
		server->loop->post([this] { server->connections.clear(); });
	}
} // namespace Lab
