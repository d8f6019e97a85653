#include "ToolRun.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

/**
 * The expected texts stand in Golden/Expected. After a wanted change of the output,
 * `HEADER_TOOL_REFRESH=1 HeaderToolTests --gtest_filter='Golden.*'` writes them anew; read the difference before keeping it.
 */
TEST(Golden, FilesAreWrittenAsExpected)
{
	const std::filesystem::path golden = GOLDEN_FOLDER;
	const std::filesystem::path engine = ENGINE_HEADERS;
	ToolRun tool;
	tool.options.references = {(engine / "BlueprintAsyncActionBase.h").string(), (engine / "BlueprintFunctionLibrary.h").string()};
	for (const char* const name : {"Plain.h", "SampleLibrary.h", "SampleNode.h", "SampleTypes.h"})
	{
		tool.options.headers.push_back((golden / name).string());
	}
	ASSERT_EQ(tool.run(), std::vector<std::string>());

	size_t compared = 0;
	for (const auto& entry : std::filesystem::directory_iterator(golden / "Expected"))
	{
		const std::string written = tool.folder.read("out/" + entry.path().stem().string());
		if (std::getenv("HEADER_TOOL_REFRESH"))
		{
			std::ofstream(entry.path(), std::ios::binary) << written;
		}
		std::stringstream text;
		text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
		EXPECT_EQ(written, text.str()) << entry.path();
		++compared;
	}
	EXPECT_EQ(compared, 7u);
}
