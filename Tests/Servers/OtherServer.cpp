#include "OtherServer.h"

#include <fcntl.h>
#include <regex>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

OtherServer::OtherServer(std::vector<std::string> words)
{
	int ends[2];
	if (pipe2(ends, O_CLOEXEC) != 0)
	{
		throw std::system_error(errno, std::generic_category(), "pipe");
	}
	output = ends[0];
	words.insert(words.begin(), {"setpriv", "--pdeathsig", "KILL"});
	program.start(words, ends[1]);
	close(ends[1]);
	port = readPort();
}

OtherServer::~OtherServer()
{
	program.kill();
	close(output);
}

std::string OtherServer::readPort()
{
	static const std::regex told("(?:port |127\\.0\\.0\\.1:)([0-9]+)[^0-9]");
	std::string said;
	for (std::smatch found;;)
	{
		char bytes[1000];
		const ssize_t number = read(output, bytes, sizeof bytes);
		if (number <= 0)
		{
			throw std::runtime_error("a server does not come up; Scripts/setup.sh --test installs what it needs. It says: " + said);
		}
		said.append(bytes, static_cast<size_t>(number));
		if (std::regex_search(said, found, told))
		{
			return found[1];
		}
	}
}
