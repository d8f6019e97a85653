#pragma once

#include "Run.h"

#include <atomic>
#include <fmt/format.h>
#include <fstream>
#include <sstream>
#include <unistd.h>

/** A folder with headers for one run of the tool; gone at the end of the test. */
class ToolRun
{
public:
	ToolRun()
		: folder(std::filesystem::temp_directory_path() / fmt::format("header-tool-{}-{}", getpid(), ++lastNumber))
	{
		std::filesystem::create_directories(folder);
		options.module = "Sample";
		options.output = folder / "out";
	}
	~ToolRun() { std::filesystem::remove_all(folder); }
	ToolRun(const ToolRun&) = delete;
	ToolRun& operator=(const ToolRun&) = delete;

	/** Writes a header and puts it on the command line. */
	void addHeader(const std::string& name, const std::string& text)
	{
		std::filesystem::create_directories((folder / name).parent_path());
		std::ofstream(folder / name, std::ios::binary) << text;
		options.headers.push_back((folder / name).string());
	}

	/** @return the messages, with paths from the folder on. */
	std::vector<std::string> run() const
	{
		std::vector<std::string> messages;
		const std::string prefix = folder.string() + "/";
		for (const HeaderTool::Diagnostic& diagnostic : HeaderTool::run(options))
		{
			std::string message = HeaderTool::format(diagnostic);
			for (size_t at; (at = message.find(prefix)) != std::string::npos;)
			{
				message.erase(at, prefix.size());
			}
			messages.push_back(message);
		}
		return messages;
	}

	static std::string read(const std::filesystem::path& path)
	{
		std::stringstream text;
		text << std::ifstream(path, std::ios::binary).rdbuf();
		return text.str();
	}

	std::filesystem::path folder;
	HeaderTool::Options options;

private:
	static inline std::atomic<int> lastNumber = 0;
};
