#include "DemoOrigin.h"

#include <fmt/core.h>
#include <httplib.h>

#include <optional>
#include <stdexcept>
#include <thread>

namespace Program
{
	struct DemoOrigin::Server
	{
		httplib::Server http;
		std::thread thread;
	};

	namespace
	{
		constexpr const char* plainText = "text/plain; charset=utf-8";

		void answerHeaders(const httplib::Request& request, httplib::Response& response)
		{
			std::string lines;
			for (const auto& [name, value] : request.headers)
			{
				const bool isOwnEntry = name.find('_') != std::string::npos; // the library adds REMOTE_ADDR and the like
				lines += isOwnEntry ? "" : fmt::format("{}: {}\r\n", name, value);
			}
			response.set_content(lines, plainText);
		}

		/** Slow on purpose: it shows that requests do not wait for each other. */
		void answerLate(const httplib::Request& request, httplib::Response& response)
		{
			const std::string milliseconds = request.matches[1];
			std::this_thread::sleep_for(std::chrono::milliseconds(std::stoi(milliseconds)));
			response.set_content(fmt::format("waited {} ms", milliseconds), plainText);
		}

		void echo(const httplib::Request& request, httplib::Response& response)
		{
			response.set_content(request.method + ' ' + request.body, plainText);
		}

		/** Sends one event after another. @param number  how many; none = until the client leaves. */
		void stream(httplib::Response& response, std::optional<int> number)
		{
			response.set_chunked_content_provider("text/event-stream",
				[number, sent = 0](size_t, httplib::DataSink& sink) mutable
				{
					if (number && sent == *number)
					{
						sink.done();
						return true;
					}
					const std::string event = fmt::format("data: message {}\n\n", ++sent);
					std::this_thread::sleep_for(std::chrono::milliseconds(50));
					return sink.write(event.data(), event.size());
				});
		}
	} // namespace

	DemoOrigin::DemoOrigin()
		: server(std::make_unique<Server>())
	{
		httplib::Server& http = server->http;
		http.Get("/hello", [](const httplib::Request&, httplib::Response& response) { response.set_content("Hello!", plainText); });
		http.Get("/headers", answerHeaders);
		http.Get(R"(/wait/(\d{1,4}))", answerLate);
		http.Post("/echo", echo);
		http.Patch("/echo", echo);
		http.Put("/size", [](const httplib::Request& request, httplib::Response& response)
			{ response.set_content(std::to_string(request.body.size()), plainText); });
		http.Get("/events", [](const httplib::Request&, httplib::Response& response) { stream(response, 3); });
		http.Get("/endless", [](const httplib::Request&, httplib::Response& response) { stream(response, std::nullopt); });

		const int port = http.bind_to_any_port("127.0.0.1");
		if (port < 0)
		{
			throw std::runtime_error("cannot open a port on the loopback interface");
		}
		baseUrl = fmt::format("http://127.0.0.1:{}", port);
		server->thread = std::thread([&http] { http.listen_after_bind(); });
		// Connections queue from the bind on, but stop() would miss a server that does not run yet.
		while (!http.is_running())
		{
			std::this_thread::yield();
		}
	}

	DemoOrigin::~DemoOrigin()
	{
		server->http.stop();
		server->thread.join();
	}
} // namespace Program
