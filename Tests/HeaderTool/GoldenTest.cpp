#include "ToolRun.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace
{
	/**
	 * The expected texts stand in Golden/Expected. After a wanted change of the output,
	 * `HEADER_TOOL_REFRESH=1 HeaderToolTests --gtest_filter='Golden.*'` writes them anew; read the difference before keeping it.
	 */
	bool isRefreshing()
	{
		return std::getenv("HEADER_TOOL_REFRESH") != nullptr;
	}

	void addGoldenHeaders(HeaderTool::Options& options)
	{
		const std::filesystem::path golden = GOLDEN_FOLDER;
		const std::filesystem::path engine = ENGINE_HEADERS;
		options.references = {(engine / "BlueprintAsyncActionBase.h").string(), (engine / "BlueprintFunctionLibrary.h").string()};
		for (const char* const name : {"Plain.h", "SampleLibrary.h", "SampleNode.h", "SampleTypes.h"})
		{
			options.headers.push_back((golden / name).string());
		}
	}
} // namespace

TEST(Golden, FilesAreWrittenAsExpectedAndNoOthers)
{
	ToolRun tool;
	addGoldenHeaders(tool.options);
	tool.options.json = tool.options.output / "Sample.json";
	ASSERT_EQ(tool.run(), std::vector<std::string>());

	const std::filesystem::path expected = std::filesystem::path(GOLDEN_FOLDER) / "Expected";
	size_t written = 0;
	for (const auto& entry : std::filesystem::directory_iterator(tool.options.output))
	{
		const std::string name = entry.path().filename().string();
		const std::filesystem::path golden = expected / (name + ".expected");
		if (isRefreshing())
		{
			std::filesystem::create_directories(expected);
			std::filesystem::copy_file(entry.path(), golden, std::filesystem::copy_options::overwrite_existing);
		}
		std::stringstream text;
		text << std::ifstream(golden, std::ios::binary).rdbuf();
		EXPECT_EQ(tool.folder.read("out/" + name), text.str()) << golden;
		++written;
	}
	EXPECT_EQ(written, 9u);
	if (isRefreshing())
	{
		GTEST_SKIP() << "the expected texts were just rewritten";
	}
}
