#pragma once

#include <functional>
#include <memory>
#include <string>

namespace Lab
{
	struct RecorderOptions
	{
		std::string to; // the server: "http://host:port" or "https://host", perhaps with the begin of all paths
		std::string file; // the cassette; replaced
		int port = 0; // 0 = the system chooses one
		std::string address = "127.0.0.1";
		bool keepsSecrets = false;
		std::function<void(const std::string&)> complain = {}; // hears, on any thread, of a server that cannot be reached
	};

	/**
	 * Stands between clients and a server, and writes what passes, exchange by exchange. Clients speak plain HTTP to it. In what
	 * the server gets, Host is its own name and Connection is "close": each connection carries one request. A server that is not
	 * reached, or whose certificate is not trusted, is answered for with 502. Runs while it lives. Thread: any.
	 */
	class Recorder
	{
	public:
		/** Throws std::invalid_argument for a URL that it does not understand, std::system_error for port and file. */
		explicit Recorder(const RecorderOptions& options);
		~Recorder();
		Recorder(const Recorder&) = delete;
		Recorder& operator=(const Recorder&) = delete;

		/** What clients ask instead of the server. */
		std::string url(const std::string& path = "/") const;
		/** How many exchanges are in the file. */
		int count() const;

	private:
		class Relay;
		const std::unique_ptr<Relay> relay;
	};
} // namespace Lab
