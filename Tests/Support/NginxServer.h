#pragma once

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
 * in a folder of their own, which goes with this object; transfers are cut off. It never outlives the thread that made
 * this object.
 */
class NginxServer
{
public:
	/** Starts nginx. Requests wait until it is up; one that does not come up says why on stderr, and refuses them. */
	explicit NginxServer(const NginxOptions& options);
	~NginxServer();

	/** @param path  begins with '/'. */
	std::string url(const std::string& path) const { return origin + path; }
	/** An empty folder to put served files into, unless the options named another. */
	std::filesystem::path filesDirectory() const { return directory / "files"; }

private:
	std::filesystem::path directory;
	std::string origin;
	int process = -1;
};
