#include "NginxServer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <netinet/in.h>
#include <spawn.h>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace
{
	constexpr std::string_view readyPath = "/nginx-is-ready"; // what this fixture asks for leaves no line in any log
	constexpr std::chrono::seconds longestStart(10);

	/** A socket that closes itself. */
	struct Socket
	{
		~Socket() { close(descriptor); }
		const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
	};

	sockaddr_in loopback(std::uint16_t port)
	{
		sockaddr_in address{};
		address.sin_family = AF_INET;
		address.sin_port = htons(port);
		address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
		return address;
	}

	/** Makes the socket listen on a port that the system chooses. */
	std::uint16_t listenOnFreePort(const Socket& listener)
	{
		sockaddr_in address = loopback(0);
		socklen_t size = sizeof(address);
		if (bind(listener.descriptor, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listener.descriptor, SOMAXCONN) != 0 ||
			getsockname(listener.descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0)
		{
			throw std::system_error(errno, std::generic_category(), "listen");
		}
		return ntohs(address.sin_port);
	}
} // namespace

NginxServer::NginxServer(const NginxOptions& options)
{
	{
		// The socket listens before nginx runs and is handed over to it: nobody can take the port in between.
		const Socket listener;
		portNumber = listenOnFreePort(listener);
		writeConfig(options);
		start(listener.descriptor);
	}
	waitUntilAnswers();
}

NginxServer::Run::Run()
{
	std::string name = (std::filesystem::temp_directory_path() / "corvane-nginx-XXXXXX").string();
	if (!mkdtemp(name.data()))
	{
		throw std::system_error(errno, std::generic_category(), "mkdtemp");
	}
	directory = name;
}

NginxServer::Run::~Run()
{
	if (process > 0)
	{
		kill(process, SIGTERM);
		waitpid(process, nullptr, 0);
	}
	std::error_code ignored;
	std::filesystem::remove_all(directory, ignored);
}

std::string NginxServer::url(const std::string& path) const
{
	return fmt::format("http://127.0.0.1:{}{}", portNumber, path);
}

void NginxServer::writeConfig(const NginxOptions& options) const
{
	std::filesystem::create_directory(filesDirectory());
	const std::filesystem::path root = options.root.empty() ? filesDirectory() : std::filesystem::absolute(options.root);
	std::ofstream config(own.directory / "nginx.conf");
	if (geteuid() == 0)
	{
		config << "user root;\n"; // or the worker becomes somebody who may not read the served folder
	}
	config << fmt::format(R"(daemon off;
worker_processes 1;
pid "{0}/nginx.pid";
events {{ worker_connections 4096; }}
http {{
	access_log off;
	client_body_temp_path "{0}/client_body";
	proxy_temp_path "{0}/proxy";
	fastcgi_temp_path "{0}/fastcgi";
	uwsgi_temp_path "{0}/uwsgi";
	scgi_temp_path "{0}/scgi";
	server {{
		listen 127.0.0.1:{1};
		root "{2}";
		location = {3} {{ access_log off; return 204; }}
{4}
	}}
}}
)",
		own.directory.string(), portNumber, root.string(), readyPath, options.serverConfig);
	if (!config.flush())
	{
		throw std::runtime_error("nginx: its configuration cannot be written");
	}
}

void NginxServer::start(int listener)
{
	const std::string config = own.directory / "nginx.conf";
	const std::string log = own.directory / "error.log";
	const std::string inherited = fmt::format("NGINX={};", listener); // how nginx takes over an open socket
	// SIGTERM and not SIGKILL: the master has to take its worker along.
	const char* const arguments[] = {
		"setpriv", "--pdeathsig", "TERM", "/usr/sbin/nginx", "-p", own.directory.c_str(), "-e", log.c_str(), "-c", config.c_str(), nullptr};
	const char* const environment[] = {inherited.c_str(), nullptr};
	posix_spawn_file_actions_t actions;
	posix_spawn_file_actions_init(&actions);
	posix_spawn_file_actions_adddup2(&actions, listener, listener); // it stays open
	const int fault = posix_spawn(
		&own.process, "/usr/bin/setpriv", &actions, nullptr, const_cast<char* const*>(arguments), const_cast<char* const*>(environment));
	posix_spawn_file_actions_destroy(&actions);
	if (fault != 0)
	{
		throw std::system_error(fault, std::generic_category(), "setpriv");
	}
}

void NginxServer::waitUntilAnswers() const
{
	// The kernel accepts for nginx already, so only an answer shows that it runs. Should it die, its end of the connection
	// goes with it and the wait is over at once.
	const Socket connection;
	const timeval limit{longestStart.count(), 0};
	const sockaddr_in address = loopback(portNumber);
	const std::string request = fmt::format("GET {} HTTP/1.0\r\n\r\n", readyPath);
	char firstByte = 0;
	if (setsockopt(connection.descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit)) != 0 ||
		connect(connection.descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
		send(connection.descriptor, request.data(), request.size(), MSG_NOSIGNAL) < 0 || recv(connection.descriptor, &firstByte, 1, 0) != 1)
	{
		std::ifstream log(own.directory / "error.log");
		throw std::runtime_error("nginx did not start: " + std::string(std::istreambuf_iterator<char>(log), {}));
	}
}
