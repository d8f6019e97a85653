#pragma once

#include <memory>
#include <string>

namespace Program
{
	/**
	 * A small web server on a free port of the loopback interface, for the examples: /hello answers with a greeting, /headers
	 * with the request's header lines, /wait/N after N milliseconds, everything else with 404. Runs while it lives.
	 */
	class DemoOrigin
	{
	public:
		DemoOrigin();
		~DemoOrigin();
		DemoOrigin(const DemoOrigin&) = delete;
		DemoOrigin& operator=(const DemoOrigin&) = delete;

		/** @return "http://127.0.0.1:PORT". */
		const std::string& url() const { return baseUrl; }

	private:
		struct Server;
		const std::unique_ptr<Server> server;
		std::string baseUrl;
	};
} // namespace Program
