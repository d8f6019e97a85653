#include "Kit/Self.h"

#include "Kit/Command.h"

#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

Figures runSelf(const std::string& arguments)
{
	const std::string program = std::filesystem::read_symlink("/proc/self/exe");
	Figures taken;
	for (const nlohmann::json& figure : nlohmann::json::parse(outputOf("'" + program + "' " + arguments)))
	{
		taken.push_back({figure.at(0), figure.at(1), figure.at(2)});
	}
	return taken;
}

void printForParent(const Figures& figures)
{
	nlohmann::json printed = nlohmann::json::array();
	for (const Figure& figure : figures)
	{
		printed.push_back({figure.name, figure.unit, figure.value});
	}
	fmt::print("{}\n", printed.dump());
}
