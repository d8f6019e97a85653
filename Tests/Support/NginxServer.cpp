#include "NginxServer.h"

#include "LoopbackListener.h"

#include <csignal>
#include <fmt/format.h>
#include <fstream>
#include <spawn.h>
#include <sys/wait.h>

namespace
{
	std::filesystem::path makeDirectory()
	{
		std::string name = (std::filesystem::temp_directory_path() / "corvane-nginx-XXXXXX").string();
		if (!mkdtemp(name.data()))
		{
			throw std::system_error(errno, std::generic_category(), "mkdtemp");
		}
		return name;
	}

	/** Relative paths lie in the server's folder. */
	std::string configuration(const NginxOptions& options, const std::filesystem::path& files, const std::string& authority)
	{
		return fmt::format(R"({}
daemon off;
worker_processes 1;
pid nginx.pid;
events {{ worker_connections 4096; }}
http {{
	access_log off;
	client_body_temp_path client_body; proxy_temp_path proxy;
	fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi; scgi_temp_path scgi;
	server {{ listen {}; root "{}"; {} }}
}}
)",
			geteuid() == 0 ? "user root;" : "", // or the worker becomes somebody who may not read the served folder
			authority, options.root.empty() ? files.string() : std::filesystem::absolute(options.root).string(), options.serverConfig);
	}

	int start(const std::filesystem::path& directory, int listener)
	{
		const std::string inherited = fmt::format("NGINX={};", listener); // how nginx takes over an open socket
		// SIGTERM and not SIGKILL: the master has to take its worker along.
		const char* const arguments[] = {
			"setpriv", "--pdeathsig", "TERM", "/usr/sbin/nginx", "-p", directory.c_str(), "-e", "error.log", "-c", "nginx.conf", nullptr};
		const char* const environment[] = {inherited.c_str(), nullptr};
		posix_spawn_file_actions_t actions;
		posix_spawn_file_actions_init(&actions);
		posix_spawn_file_actions_adddup2(&actions, listener, listener); // it stays open
		int process = -1;
		const int fault = posix_spawn(
			&process, "/usr/bin/setpriv", &actions, nullptr, const_cast<char* const*>(arguments), const_cast<char* const*>(environment));
		posix_spawn_file_actions_destroy(&actions);
		if (fault != 0)
		{
			throw std::system_error(fault, std::generic_category(), "setpriv");
		}
		return process;
	}
} // namespace

NginxServer::NginxServer(const NginxOptions& options)
	: directory(makeDirectory())
{
	// The socket listens before nginx runs and is handed over to it: nobody can take the port in between.
	const LoopbackListener listener;
	origin = "http://" + listener.authority();
	std::filesystem::create_directory(filesDirectory());
	std::ofstream(directory / "nginx.conf") << configuration(options, filesDirectory(), listener.authority());
	process = start(directory, listener.descriptor);
}

NginxServer::~NginxServer()
{
	kill(process, SIGTERM);
	waitpid(process, nullptr, 0);
	std::error_code ignored;
	std::filesystem::remove_all(directory, ignored);
}
