#pragma once

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

	/** @param path  begins with '/'. */
	std::string url(const std::string& path) const;
	/** An empty folder to put served files into, unless the options named another. */
	std::filesystem::path filesDirectory() const { return own.directory / "files"; }

private:
	/** The folder and what runs in it; both go also behind a constructor that throws. Transfers are cut off. */
	struct Run
	{
		Run();
		~Run();
		std::filesystem::path directory;
		int process = -1;
	};

	void writeConfig(const NginxOptions& options) const;
	void start(int listener);
	void waitUntilAnswers() const;

	Run own;
	std::uint16_t portNumber = 0;
};
