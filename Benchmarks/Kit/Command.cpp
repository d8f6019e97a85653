#include "Kit/Command.h"

#include <array>
#include <cstdio>
#include <stdexcept>

std::string outputOf(const std::string& command)
{
	std::FILE* const pipe = popen(command.c_str(), "r");
	if (!pipe)
	{
		throw std::runtime_error("another process cannot be started");
	}
	std::string output;
	std::array<char, 4096> bytes{};
	while (const std::size_t number = std::fread(bytes.data(), 1, bytes.size(), pipe))
	{
		output.append(bytes.data(), number);
	}
	if (pclose(pipe) != 0)
	{
		throw std::runtime_error("another process failed: " + command);
	}
	return output;
}
