#pragma once

#include "Run.h"
#include "TempDir.h"

#include <fmt/format.h>

/** A folder with headers for one run of the tool. */
struct ToolRun
{
	ToolRun()
	{
		options.module = "Sample";
		options.output = folder.path("out");
	}

	/** Writes a header and puts it on the command line. */
	void addHeader(const std::string& name, const std::string& text) { options.headers.push_back(folder.write(name, text)); }

	/** @return the messages, with paths from the folder on. */
	std::vector<std::string> run() const
	{
		std::vector<std::string> messages;
		const std::string prefix = folder.path() + "/";
		for (const HeaderTool::Diagnostic& diagnostic : HeaderTool::run(options))
		{
			std::string& message = messages.emplace_back(HeaderTool::format(diagnostic));
			for (size_t at; (at = message.find(prefix)) != std::string::npos;)
			{
				message.erase(at, prefix.size());
			}
		}
		return messages;
	}

	const TempDir folder;
	HeaderTool::Options options;
};
