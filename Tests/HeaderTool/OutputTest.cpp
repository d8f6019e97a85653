#include "ToolRun.h"

#include <gtest/gtest.h>

namespace
{
	std::string header(const std::string& name, const std::string& function)
	{
		return fmt::format("#pragma once\n#include \"CoreMinimal.h\"\n#include \"{0}.generated.h\"\n"
						   "UCLASS()\nclass U{0} : public UObject\n{{\n\tGENERATED_BODY()\npublic:\n\tUFUNCTION()\n\tvoid {1}();\n}};\n",
			name, function);
	}

	/** A time that no clock of the test gives a file by itself. */
	const std::filesystem::file_time_type longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1000);
} // namespace

TEST(Output, UnchangedFilesAreLeftAloneAndChangedOnesAreNot)
{
	ToolRun tool;
	tool.addHeader("One.h", header("One", "first"));
	tool.addHeader("Module/Public/Deep/Two.h", header("Two", "second"));
	ASSERT_TRUE(tool.run().empty());
	const std::vector<std::string> names = {"One.generated.h", "One.gen.cpp", "Two.generated.h", "Two.gen.cpp"};
	for (const std::string& name : names)
	{
		std::filesystem::last_write_time(tool.options.output / name, longAgo);
	}
	tool.folder.write("Module/Public/Deep/Two.h", header("Two", "renamed"));
	ASSERT_TRUE(tool.run().empty());
	for (const std::string& name : names)
	{
		EXPECT_EQ(std::filesystem::last_write_time(tool.options.output / name) != longAgo, name == "Two.gen.cpp") << name;
	}
	const std::string source = tool.folder.read("out/Two.gen.cpp");
	EXPECT_NE(source.find("renamed"), std::string::npos);
	EXPECT_NE(source.find("#include \"Deep/Two.h\"\n"), std::string::npos) << "what follows the folder Public";
}

TEST(Output, OneMistakeAnywhereKeepsEverythingUnwritten)
{
	ToolRun tool;
	tool.addHeader("Good.h", header("Good", "fine"));
	tool.addHeader("Bad.h", header("Bad", "1"));
	EXPECT_EQ(tool.run().size(), 1u);
	EXPECT_FALSE(tool.folder.exists("out"));
}

TEST(Output, FilesThatCannotBeReadOrWrittenAreMistakes)
{
	ToolRun missing;
	missing.options.headers = {missing.folder.path("None.h"), missing.folder.path()};
	EXPECT_EQ(missing.run().size(), 2u);
	EXPECT_EQ(missing.run().front(), "None.h(1): Error: the file cannot be read");

	ToolRun blocked;
	blocked.addHeader("One.h", header("One", "first"));
	blocked.folder.write("out", "a file where the folder should be");
	EXPECT_EQ(blocked.run(), (std::vector<std::string>{"out/One.generated.h(1): Error: the file cannot be written",
								 "out/One.gen.cpp(1): Error: the file cannot be written"}));
}
