#include "Kit/Self.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

nlohmann::json runSelf(const std::string& arguments)
{
	const std::string program = std::filesystem::read_symlink("/proc/self/exe");
	std::FILE* const pipe = popen(("'" + program + "' " + arguments).c_str(), "r");
	if (!pipe)
	{
		throw std::runtime_error("a second process cannot be started");
	}
	std::string output;
	std::array<char, 4096> bytes{};
	while (const std::size_t number = std::fread(bytes.data(), 1, bytes.size(), pipe))
	{
		output.append(bytes.data(), number);
	}
	if (pclose(pipe) != 0)
	{
		throw std::runtime_error("the second process failed: " + arguments);
	}
	return nlohmann::json::parse(output);
}
