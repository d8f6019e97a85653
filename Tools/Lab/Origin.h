#pragma once

#include "Lab/Plans/Behaviour.h"
#include "Lab/Wire/Log.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Lab
{
	struct OriginOptions
	{
		int port = 0; // 0 = the system chooses one
		std::string address = "127.0.0.1"; // the interface it listens on; 0.0.0.0 = all of them
		bool usesTls = false; // with a certificate of its own making
		bool keepsLog = true; // false = nothing of an exchange stays, for measurements
		std::function<void(const std::string&)> complain = {}; // hears, on the origin's thread, when a behaviour fails with an exception
	};

	/**
	 * A web server that does what it is told, mostly wrong. It has one thread, on which behaviours are asked, too. What comes
	 * under /lab/log is its own: GET tells the exchanges so far as JSON, DELETE forgets them and the visits. Runs while it lives;
	 * its end cuts what is open. Thread: any.
	 */
	class Origin
	{
	public:
		/** Throws std::system_error when it cannot listen. */
		explicit Origin(const OriginOptions& options = {});
		~Origin();
		Origin(const Origin&) = delete;
		Origin& operator=(const Origin&) = delete;

		/**
		 * Says what it does at a place; replaces what was said of the same one. What is said of nowhere is answered with 404.
		 * @param place  a path. A star at its end stands for anything, and the longest such path counts. "POST /path" is for one method.
		 * @param behaviours  one after the other make the plan of the answer.
		 */
		template <class... Behaviours>
		Origin& at(const std::string& place, Behaviours... behaviours)
		{
			return setPlace(place, std::vector<Behaviour>{Behaviour(std::move(behaviours))...});
		}
		Origin& setPlace(const std::string& place, Behaviour behaviour);

		int port() const;
		/** "127.0.0.1:PORT" */
		std::string authority() const;
		/** @param path  begins with '/'. */
		std::string url(const std::string& path = "/") const;
		/** What a client has to trust, as PEM; empty without TLS. */
		std::string certificate() const;

		std::vector<Exchange> log() const;
		/** Requests so far whose head has come, and connections. Unlike the log, these are not forgotten. */
		std::uint64_t requests() const;
		std::uint64_t connections() const;
		/** Answers under way, stalled ones too. */
		int running() const;
		/** Closes every connection, soon. */
		void dropConnections();

	private:
		class Server;
		friend class Connection;
		const std::unique_ptr<Server> server;
	};
} // namespace Lab
