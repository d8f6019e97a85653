#include "FileKit.h"
#include "Host/Directories.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "TempDir.h"

#include <filesystem>

using EAction = EHTTPCorvFileBytesToFileActionType;

namespace
{
	class ByteDataToFile : public ModuleFixture
	{
	protected:
		void write(EAction action, std::string_view bytes, const std::string& path, EHTTPCorvFileUpload kind = EHTTPCorvFileUpload::E_ad)
		{
			TArray<uint8> array;
			array.Append(reinterpret_cast<const uint8*>(bytes.data()), static_cast<int32>(bytes.size()));
			UCorvaneBPLibrary::byteDataToFile(action, array, kind, text(path));
		}

		TempDir dir;
		LogCapture log;
	};
} // namespace

TEST_F(ByteDataToFile, WritesOverwritesAndRefuses)
{
	const std::string path = dir.path("new/sub/a.bin");
	write(EAction::E_NOT_OVERWRITE, std::string_view("a\0b", 3), path);
	write(EAction::E_NOT_OVERWRITE, "refused", path);
	drain();
	EXPECT_EQ(dir.read("new/sub/a.bin"), std::string("a\0b", 3)) << "the first creates the file, the second is refused";
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "UCorvaneBPLibrary: File exist. Cancel write to file."), 1);
	write(EAction::E_OVERWRITE, "x", path);
	drain();
	EXPECT_EQ(dir.read("new/sub/a.bin"), "x");
}

TEST_F(ByteDataToFile, KeepsCallOrder)
{
	for (int number = 0; number < 200; ++number)
	{
		write(EAction::E_OVERWRITE, std::to_string(number), dir.path("a.txt"));
	}
	drain();
	EXPECT_EQ(dir.read("a.txt"), "199");
}

TEST_F(ByteDataToFile, LogsWhatItCannotDo)
{
	const std::string old = dir.write("readonly", "old");
	std::filesystem::permissions(old, std::filesystem::perms::owner_read);
	const std::string blocked = dir.write("file", "old") + "/below"; // a file where a directory is needed
	struct Case
	{
		const char* bytes;
		std::string path;
		std::string line;
	};
	const Case cases[] = {
		{"", dir.path("a"), "UCorvaneBPLibrary: Empty byteData Array."},
		{"x", "", "UCorvaneBPLibrary: FilePath not set."},
		{"x", dir.path(), "ByteDataToFile: Can't write into " + dir.path() + " "},
		{"x", old, "ByteDataToFile: Can't write into " + old + " "},
		{"x", blocked, "ByteDataToFile: Can't write into " + blocked + " "},
	};
	for (const Case& c : cases)
	{
		write(EAction::E_OVERWRITE, c.bytes, c.path);
		drain();
		ASSERT_FALSE(log.lines().empty()) << c.line;
		EXPECT_EQ(log.lines().back().text, c.line);
		EXPECT_EQ(log.lines().back().verbosity, ELogVerbosity::Error);
	}
	EXPECT_EQ(log.lines().size(), std::size(cases));
	EXPECT_EQ(dir.read("readonly"), "old");
	EXPECT_FALSE(dir.exists("a"));
}

TEST_F(ByteDataToFile, NoticesAFullDisk)
{
	if (!std::filesystem::exists("/dev/full"))
	{
		GTEST_SKIP() << "no device that is always full";
	}
	// A link to the device that is always full; it is no regular file, so it is written to and not replaced.
	std::filesystem::create_symlink("/dev/full", dir.path("full"));
	write(EAction::E_NOT_OVERWRITE, std::string(100000, 'x'), dir.path("full"));
	drain();
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "ByteDataToFile: Can't write into "), 1);
	{
		const FileSizeLimit limit(1000);
		write(EAction::E_NOT_OVERWRITE, std::string(1001, 'x'), dir.path("later"));
		drain();
	}
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "ByteDataToFile: Can't write into "), 2);
	write(EAction::E_NOT_OVERWRITE, "there is room again", dir.path("later"));
	drain();
	EXPECT_EQ(dir.read("later"), "there is room again");
}

TEST_F(ByteDataToFile, QueuedWritesAreFinishedAtTheEndOfTheProgram)
{
	for (int number = 0; number < 100; ++number)
	{
		write(EAction::E_OVERWRITE, std::string(10000, 'x'), dir.path(std::to_string(number)));
	}
	loop.Shutdown();
	for (int number = 0; number < 100; ++number)
	{
		ASSERT_EQ(dir.read(std::to_string(number)).size(), 10000u);
	}
}

TEST_F(ByteDataToFile, WritesBelowTheProject)
{
	HostDirectories::Set(dir.path(), "");
	write(EAction::E_OVERWRITE, "game", "Saved/a.txt", EHTTPCorvFileUpload::E_gd);
	drain();
	EXPECT_EQ(dir.read("Saved/a.txt"), "game");
}
