#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>

/** What one nginx serves. */
struct NginxOptions
{
	/** Directory that "/" shows; must exist. Empty = the server's own, filesDirectory(). */
	std::filesystem::path root = {};
	/** More configuration text, put inside the server block: locations, limits, an access log. */
	std::string serverConfig = {};
};

/**
 * A real nginx with one worker on a free port of the loopback interface. Its configuration, logs and temporary files live
 * in a folder of their own, which goes with this object. It never outlives the thread that made this object.
 */
class NginxServer
{
public:
	/** Starts nginx and returns when it has answered. Throws std::runtime_error with its log when it does not. */
	explicit NginxServer(const NginxOptions& options);
	/** Stops nginx and waits for its end; running transfers are cut off. */
	~NginxServer();
	NginxServer(const NginxServer&) = delete;
	NginxServer& operator=(const NginxServer&) = delete;

	std::uint16_t port() const { return portNumber; }
	/** @param path  begins with '/'. */
	std::string url(const std::string& path) const;
	/** The folder for nginx's own files, where extra configuration may place a log of its own. */
	const std::filesystem::path& directory() const { return ownDirectory; }
	/** An empty folder to put served files into, unless the options named another. */
	std::filesystem::path filesDirectory() const { return ownDirectory / "files"; }
	/** What nginx wrote to its error log so far. */
	std::string errorLog() const;

private:
	/** Makes the folder; from here on the destructor cleans up, also behind a constructor that throws. */
	NginxServer();
	void writeConfig(const NginxOptions& options) const;
	void start(int listener);
	void waitUntilAnswers() const;
	bool hasEndedWithin(std::chrono::seconds time) const;

	std::filesystem::path ownDirectory;
	std::uint16_t portNumber = 0;
	int processId = -1;
};
