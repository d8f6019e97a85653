#include "FileKit.h"
#include "RandomBytes.h"

class ReadAndWriteFiles : public FileTest
{
};

TEST_F(ReadAndWriteFiles, BytesComeBackWhateverTheirNumber)
{
	const std::string path = dir.path("new/sub/n\u00e4me");
	for (const size_t number : {100'000u, 1025u, 1024u, 1023u, 1u, 0u})
	{
		const std::string bytes = randomBytes(number);
		EXPECT_TRUE(write(path, bytes)) << number;
		EXPECT_TRUE(read(path) == bytes) << number;
		EXPECT_TRUE(add(path, "tail") && add(path, "")) << number;
		EXPECT_TRUE(dir.read("new/sub/n\u00e4me") == bytes + "tail") << number;
	}
	EXPECT_TRUE(add(dir.path("sub/log"), "made"));
	EXPECT_EQ(dir.read("sub/log"), "made");
}

TEST_F(ReadAndWriteFiles, ReadingStartsWhereItIsToldTo)
{
	const std::string path = dir.write("a", "12345");
	const std::pair<int64, const char*> cases[] = {
		{0, "12345"}, {2, "345"}, {4, "5"}, {5, ""}, {6, ""}, {INT64_MAX, ""}, {-1, "12345"}, {INT64_MIN, "12345"}};
	for (const auto& [seek, bytes] : cases)
	{
		EXPECT_EQ(read(path, seek), bytes) << seek;
	}
}

TEST_F(ReadAndWriteFiles, TextComesBack)
{
	for (const std::string& written :
		{std::string(), std::string("plain\r\n"), std::string("\u00fc \u20ac \U0001F600"), std::string("zero\0inside", 11)})
	{
		EXPECT_TRUE(writeText(dir.path("a.txt"), written));
		EXPECT_EQ(readText(dir.path("a.txt")), written);
	}
	EXPECT_EQ(readText(dir.write("a.txt", "\xC3\xBC from elsewhere")), "\u00fc from elsewhere");
}

TEST_F(ReadAndWriteFiles, NothingButFilesCanBeReadAndWritten)
{
	for (const std::string& path : noFiles())
	{
		EXPECT_FALSE(read(path) || readText(path)) << path;
		EXPECT_FALSE(write(path, "new") || add(path, "new") || writeText(path, "new")) << path;
	}
	EXPECT_FALSE(read(dir.path("missing")) || readText(dir.path("missing")));
	EXPECT_EQ(dir.read("file"), "x");
}

TEST_F(ReadAndWriteFiles, MoreThanAnArrayHoldsIsAFailure)
{
	const int64 size = int64(MAX_int32) + 1;
	std::filesystem::resize_file(file, size);
	EXPECT_FALSE(read(file) || readText(file));
	EXPECT_EQ(read(file, size - 3), std::string(3, '\0')) << "what is to be read counts, not what is skipped";
}

TEST_F(ReadAndWriteFiles, AFullDiskIsAFailureAndWhatWasThereStays)
{
	const std::string path = dir.write("log", std::string(1000, 'a'));
	{
		const FileSizeLimit limit(1500);
		EXPECT_FALSE(add(path, std::string(1000, 'b')));
		EXPECT_TRUE(add(path, std::string(500, 'c')));
		EXPECT_FALSE(write(dir.path("new"), std::string(1501, 'd')));
		EXPECT_FALSE(add(dir.path("absent"), std::string(1501, 'e')));
	}
	EXPECT_FALSE(dir.exists("absent")) << "what was not there stays so";
	EXPECT_EQ(dir.read("log"), std::string(1000, 'a') + std::string(500, 'c'));
}
