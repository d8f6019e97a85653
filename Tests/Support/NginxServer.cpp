#include "NginxServer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <netinet/in.h>
#include <stdexcept>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace
{
	constexpr std::string_view readyPath = "/nginx-is-ready"; // what this fixture asks for leaves no line in any log
	constexpr std::chrono::seconds longestStart(10);
	constexpr std::chrono::seconds longestStop(5);

	[[noreturn]] void throwSystemError(const char* what)
	{
		throw std::system_error(errno, std::generic_category(), what);
	}

	/** A socket that closes itself. */
	class Socket
	{
	public:
		Socket()
			: descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
		{
			if (descriptor < 0)
			{
				throwSystemError("socket");
			}
		}
		~Socket() { close(descriptor); }
		Socket(const Socket&) = delete;
		Socket& operator=(const Socket&) = delete;

		int get() const { return descriptor; }

	private:
		int descriptor;
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
		if (bind(listener.get(), reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(listener.get(), SOMAXCONN) != 0 ||
			getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0)
		{
			throwSystemError("listen");
		}
		return ntohs(address.sin_port);
	}

	std::filesystem::path makeDirectory()
	{
		std::string name = (std::filesystem::temp_directory_path() / "corvane-nginx-XXXXXX").string();
		if (!mkdtemp(name.data()))
		{
			throwSystemError("mkdtemp");
		}
		return name;
	}

	/** Becomes nginx, or ends. Runs between fork and exec, so it may use nothing but plain system calls. */
	[[noreturn]] void becomeNginx(int listener, char* const arguments[], char* const environment[], pid_t parent)
	{
		// SIGTERM and not SIGKILL: the master has to take its worker along.
		const bool hasParent = prctl(PR_SET_PDEATHSIG, SIGTERM) == 0 && getppid() == parent;
		if (hasParent && fcntl(listener, F_SETFD, 0) == 0)
		{
			for (const char* program : {"/usr/sbin/nginx", "/usr/bin/nginx", "/usr/local/sbin/nginx"})
			{
				execve(program, arguments, environment);
			}
		}
		_exit(127);
	}
} // namespace

NginxServer::NginxServer()
	: ownDirectory(makeDirectory())
{
}

NginxServer::NginxServer(const NginxOptions& options)
	: NginxServer()
{
	{
		// The socket listens before nginx runs and is handed over to it: nobody can take the port in between.
		const Socket listener;
		portNumber = listenOnFreePort(listener);
		writeConfig(options);
		start(listener.get());
	}
	waitUntilAnswers();
}

NginxServer::~NginxServer()
{
	if (processId > 0)
	{
		kill(processId, SIGTERM);
		if (!hasEndedWithin(longestStop))
		{
			kill(processId, SIGKILL);
			waitpid(processId, nullptr, 0);
		}
	}
	std::error_code ignored;
	std::filesystem::remove_all(ownDirectory, ignored);
}

std::string NginxServer::url(const std::string& path) const
{
	return fmt::format("http://127.0.0.1:{}{}", portNumber, path);
}

std::string NginxServer::errorLog() const
{
	std::ifstream log(ownDirectory / "error.log");
	return {std::istreambuf_iterator<char>(log), {}};
}

void NginxServer::writeConfig(const NginxOptions& options) const
{
	std::filesystem::create_directory(filesDirectory());
	const std::filesystem::path root = options.root.empty() ? filesDirectory() : std::filesystem::absolute(options.root);
	std::ofstream config(ownDirectory / "nginx.conf");
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
		ownDirectory.string(), portNumber, root.string(), readyPath, options.serverConfig);
	if (!config.flush())
	{
		throw std::runtime_error("nginx: its configuration cannot be written");
	}
}

void NginxServer::start(int listener)
{
	const std::string config = ownDirectory / "nginx.conf";
	const std::string log = ownDirectory / "error.log";
	const std::string inherited = fmt::format("NGINX={};", listener); // how nginx takes over an open socket
	const char* const arguments[] = {"nginx", "-p", ownDirectory.c_str(), "-e", log.c_str(), "-c", config.c_str(), nullptr};
	const char* const environment[] = {inherited.c_str(), nullptr};
	const pid_t parent = getpid();
	processId = fork();
	if (processId < 0)
	{
		throwSystemError("fork");
	}
	if (processId == 0)
	{
		becomeNginx(listener, const_cast<char* const*>(arguments), const_cast<char* const*>(environment), parent);
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
	if (setsockopt(connection.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit)) != 0 ||
		connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
		send(connection.get(), request.data(), request.size(), MSG_NOSIGNAL) < 0 || recv(connection.get(), &firstByte, 1, 0) != 1)
	{
		throw std::runtime_error("nginx did not start: " + errorLog());
	}
}

bool NginxServer::hasEndedWithin(std::chrono::seconds time) const
{
	const auto deadline = std::chrono::steady_clock::now() + time;
	while (waitpid(processId, nullptr, WNOHANG) == 0)
	{
		if (std::chrono::steady_clock::now() >= deadline)
		{
			return false;
		}
		std::this_thread::sleep_for(std::chrono::milliseconds(2)); // there is no wait for a child with a time limit
	}
	return true;
}
