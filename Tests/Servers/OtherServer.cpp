#include "OtherServer.h"

#include <cctype>
#include <fcntl.h>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace
{
	/** The number behind "port " or the loopback address, once something stands behind the number. */
	std::optional<std::string> portIn(const std::string& said)
	{
		for (const std::string sign : {"port ", "127.0.0.1:"})
		{
			for (size_t at = said.find(sign); at != std::string::npos; at = said.find(sign, at + 1))
			{
				const size_t start = at + sign.size();
				size_t end = start;
				while (end < said.size() && std::isdigit(static_cast<unsigned char>(said[end])))
				{
					++end;
				}
				if (end > start && end < said.size())
				{
					return said.substr(start, end - start);
				}
			}
		}
		return std::nullopt;
	}
} // namespace

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
	std::string said;
	for (;;)
	{
		char bytes[1000];
		const ssize_t number = read(output, bytes, sizeof bytes);
		if (number <= 0)
		{
			throw std::runtime_error("a server does not come up; Scripts/setup.sh --test installs what it needs. It says: " + said);
		}
		said.append(bytes, static_cast<size_t>(number));
		if (const std::optional<std::string> told = portIn(said))
		{
			return *told;
		}
	}
}
