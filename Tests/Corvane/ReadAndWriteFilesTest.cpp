#include "FileKit.h"
#include "ModuleFixture.h"
#include "RandomBytes.h"
#include "TempDir.h"

using Files = UFileFunctionsCorv;

namespace
{
	class ReadAndWriteFiles : public testing::Test
	{
	protected:
		std::string read(const std::string& path, int64 seek = 0)
		{
			return toBytes(Files::readBytesFromFile(EKind::E_ad, text(path), seek, success));
		}
		void write(const std::string& path, std::string_view bytes)
		{
			Files::writeBytesToFile(EKind::E_ad, text(path), toArray(bytes), success);
		}
		void add(const std::string& path, std::string_view bytes)
		{
			Files::addBytesToFile(EKind::E_ad, text(path), toArray(bytes), success);
		}

		const TempDir dir;
		bool success = false;
	};
} // namespace

TEST_F(ReadAndWriteFiles, BytesComeBackWhateverTheirNumber)
{
	const std::string path = dir.path("new/sub/n\u00e4me");
	for (const size_t number : {100'000u, 1025u, 1024u, 1023u, 1u, 0u})
	{
		const std::string bytes = randomBytes(number);
		write(path, bytes);
		EXPECT_TRUE(success) << number;
		EXPECT_TRUE(read(path) == bytes && success) << number;
		add(path, "tail");
		EXPECT_TRUE(success) << number;
		EXPECT_TRUE(dir.read("new/sub/n\u00e4me") == bytes + "tail") << number;
	}
}

TEST_F(ReadAndWriteFiles, ReadingStartsWhereItIsToldTo)
{
	const std::string path = dir.write("a", "12345");
	const std::pair<int64, const char*> cases[] = {
		{0, "12345"}, {2, "345"}, {4, "5"}, {5, ""}, {6, ""}, {INT64_MAX, ""}, {-1, "12345"}, {INT64_MIN, "12345"}};
	for (const auto& [seek, bytes] : cases)
	{
		EXPECT_EQ(read(path, seek), bytes) << seek;
		EXPECT_TRUE(success) << seek;
	}
}

TEST_F(ReadAndWriteFiles, AddingMakesAMissingFile)
{
	add(dir.path("sub/log"), "one\n");
	add(dir.path("sub/log"), "");
	add(dir.path("sub/log"), "two\n");
	EXPECT_TRUE(success);
	EXPECT_EQ(dir.read("sub/log"), "one\ntwo\n");
}

TEST_F(ReadAndWriteFiles, TextComesBack)
{
	const std::string cases[] = {"", "plain\r\n", "\u00fc \u20ac \U0001F600", std::string("zero\0inside", 11), std::string(5000, 'x')};
	for (const std::string& written : cases)
	{
		Files::writeStringToFile(EKind::E_ad, text(written), text(dir.path("a.txt")), success);
		EXPECT_TRUE(success);
		FString read("old");
		Files::readStringFromFile(EKind::E_ad, text(dir.path("a.txt")), success, read);
		EXPECT_TRUE(success);
		EXPECT_EQ(utf8(read), written);
	}
	dir.write("a.txt", "\xC3\xBC from elsewhere");
	FString read;
	Files::readStringFromFile(EKind::E_ad, text(dir.path("a.txt")), success, read);
	EXPECT_EQ(utf8(read), "\u00fc from elsewhere");
}

TEST_F(ReadAndWriteFiles, NothingButFilesCanBeReadAndWritten)
{
	dir.write("file", "x");
	for (const std::string& path : {dir.path("missing"), dir.path(), dir.path() + "/", dir.path("file/"), dir.path("file/below"),
			 dir.path(std::string(256, 'x')), std::string("/"), std::string()})
	{
		success = true;
		EXPECT_EQ(read(path), "") << path;
		EXPECT_FALSE(success) << path;
		success = true;
		FString data("old");
		Files::readStringFromFile(EKind::E_ad, text(path), success, data);
		EXPECT_TRUE(!success && data.IsEmpty()) << path;
		if (path == dir.path("missing"))
		{
			continue; // it would be made
		}
		success = true;
		write(path, "new");
		EXPECT_FALSE(success) << path;
		success = true;
		add(path, "new");
		EXPECT_FALSE(success) << path;
	}
	EXPECT_EQ(dir.read("file"), "x");
}

TEST_F(ReadAndWriteFiles, MoreThanAnArrayHoldsIsAFailure)
{
	const int64 size = int64(MAX_int32) + 1;
	const std::string path = dir.write("sparse", "");
	std::filesystem::resize_file(path, size);
	success = true;
	EXPECT_EQ(read(path), "");
	EXPECT_FALSE(success);
	FString data("old");
	Files::readStringFromFile(EKind::E_ad, text(path), success, data);
	EXPECT_TRUE(!success && data.IsEmpty());
	EXPECT_EQ(read(path, size - 3), std::string(3, '\0')) << "what is to be read counts, not what is skipped";
	EXPECT_TRUE(success);
}

TEST_F(ReadAndWriteFiles, AFullDiskIsAFailureAndWhatWasThereStays)
{
	const std::string path = dir.write("log", std::string(1000, 'a'));
	{
		const FileSizeLimit limit(1500);
		add(path, std::string(1000, 'b'));
		EXPECT_FALSE(success);
		add(path, std::string(500, 'c'));
		EXPECT_TRUE(success);
		write(dir.path("new"), std::string(1501, 'd'));
		EXPECT_FALSE(success);
		add(dir.path("absent"), std::string(1501, 'e'));
		EXPECT_FALSE(success);
	}
	EXPECT_FALSE(dir.exists("absent")) << "what was not there stays so";
	EXPECT_EQ(dir.read("log"), std::string(1000, 'a') + std::string(500, 'c'));
}
