#include "DemoOrigin.h"

#include <fmt/core.h>
#include <httplib.h>

#include <algorithm>
#include <atomic>
#include <memory>
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

		/** Takes a JSON value, and tells in JSON that it has it. */
		void saveJson(const httplib::Request& request, httplib::Response& response)
		{
			response.set_content(fmt::format(R"({{"saved":{}}})", request.body), "application/json");
		}

		/** @return an answer that comes for every third request only; the others are told to come back later. */
		httplib::Server::Handler busyTwice()
		{
			return [count = std::make_shared<std::atomic<int>>(0)](const httplib::Request&, httplib::Response& response)
			{
				const bool isReady = ++*count % 3 == 0;
				response.status = isReady ? 200 : 503;
				response.set_content(isReady ? "at last" : "come back later", plainText);
			};
		}

		/** Takes a form apart, with the library's own parser, and tells what it held. */
		void describeForm(const httplib::Request& request, httplib::Response& response)
		{
			std::string lines;
			for (const auto& [name, part] : request.files)
			{
				lines += part.filename.empty() ? fmt::format("{} = {}\r\n", name, part.content)
											   : fmt::format("{}: {}, {} bytes\r\n", name, part.filename, part.content.size());
			}
			response.set_content(lines, plainText);
		}

		void describeFile(const httplib::Request& request, httplib::Response& response)
		{
			response.set_content(fmt::format("{}: {}, {} bytes, {}\r\n", request.get_header_value("fileid"),
									 request.get_header_value("filename"), request.body.size(), request.get_header_value("mimetype")),
				plainText);
		}

		constexpr size_t fileSize = 1 << 20;
		constexpr size_t pieceSize = 32 << 10;

		const std::string& fileContent()
		{
			static const std::string content = []
			{
				std::string pieces;
				for (size_t piece = 0; piece < fileSize / pieceSize; ++piece)
				{
					pieces.append(pieceSize, static_cast<char>('a' + piece % 26));
				}
				return pieces;
			}();
			return content;
		}

		/**
		 * Sends as much of a file of 1 MiB as is asked for, slowly enough to be cancelled.
		 * @param breaksOff  in the middle of the file, where the answer does not begin behind it.
		 */
		void sendFile(httplib::Response& response, bool breaksOff)
		{
			static constexpr size_t middle = fileSize / 2;
			response.set_header("ETag", "\"first-edition\"");
			response.set_content_provider(fileSize, "application/octet-stream",
				[breaksOff, begin = fileSize](size_t offset, size_t length, httplib::DataSink& sink) mutable
				{
					std::this_thread::sleep_for(std::chrono::milliseconds(2));
					begin = std::min(begin, offset);
					const bool hasBroken = breaksOff && begin < middle && offset >= middle;
					return !hasBroken && sink.write(fileContent().data() + offset, std::min(length, pieceSize));
				});
		}

		/** Plays the Drive service: a file, behind a page that asks whether it is wanted in spite of its size. */
		void answerDrive(const httplib::Request& request, httplib::Response& response)
		{
			if (request.get_param_value("confirm") == "t0k3n")
			{
				response.set_content("the content of " + request.get_param_value("id"), "application/octet-stream");
				return;
			}
			response.set_content(fmt::format(R"(<span class="uc-name-size"><a href="#">level.pak</a> (1,5M)</span>)"
											 R"(<a href="/uc?id={}&amp;export=download;confirm=t0k3n&amp;x=1">Download anyway</a>)",
									 request.get_param_value("id")),
				"text/html");
		}

		void answerDriveView(const httplib::Request&, httplib::Response& response)
		{
			std::string fields = R"(["id","level.pak")";
			for (int field = 2; field < 27; ++field)
			{
				fields += ",null";
			}
			response.set_content("<script>viewer({itemJson:" + fields + R"(,"1572864"]});</script>)", "text/html");
		}

		void answerFilePage(const httplib::Request& request, httplib::Response& response)
		{
			response.set_content(
				fmt::format(R"(<html><a id="download-url" class="button" href="http://{}/hello"><img> Download</a></html>)",
					request.get_header_value("Host")),
				"text/html");
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

		/**
		 * The library makes its tables while it serves the first request. Two that come first together are no danger, but tools
		 * that watch threads and cannot look into the library take them for one.
		 */
		void serveOneAlone()
		{
			httplib::Server server;
			const int port = server.bind_to_any_port("127.0.0.1");
			std::thread thread([&server] { server.listen_after_bind(); });
			const httplib::Result answer = httplib::Client("127.0.0.1", port).Get("/"); // so by now it runs and can be stopped
			server.stop();
			thread.join();
		}
	} // namespace

	DemoOrigin::DemoOrigin()
		: server(std::make_unique<Server>())
	{
		serveOneAlone();
		httplib::Server& http = server->http;
		http.Get("/hello", [](const httplib::Request&, httplib::Response& response) { response.set_content("Hello!", plainText); });
		http.Get("/headers", answerHeaders);
		http.Get(R"(/wait/(\d{1,4}))", answerLate);
		http.Post("/echo", echo);
		http.Patch("/echo", echo);
		http.Post("/json", saveJson);
		http.Get("/busy", busyTwice());
		http.Put("/size", [](const httplib::Request& request, httplib::Response& response)
			{ response.set_content(std::to_string(request.body.size()), plainText); });
		http.Post("/upload", describeForm);
		http.Put("/upload", [](const httplib::Request& request, httplib::Response& response)
			{ request.is_multipart_form_data() ? describeForm(request, response) : describeFile(request, response); });
		http.Get("/file", [](const httplib::Request&, httplib::Response& response) { sendFile(response, false); });
		http.Get("/breaks-off", [](const httplib::Request&, httplib::Response& response) { sendFile(response, true); });
		http.Get("/uc", answerDrive);
		http.Get("/file/d/level/view", answerDriveView);
		http.Get("/page", answerFilePage);
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
