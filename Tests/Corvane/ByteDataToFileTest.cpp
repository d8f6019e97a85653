#include "FileKit.h"
#include "Host/Directories.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

using EAction = EHTTPCorvFileBytesToFileActionType;

namespace
{
	class ByteDataToFile : public ModuleFixture
	{
	protected:
		void write(EAction action, std::string_view bytes, const std::string& path, EHTTPCorvFileUpload kind = EHTTPCorvFileUpload::E_ad)
		{
			UCorvaneBPLibrary::byteDataToFile(action, toArray(bytes), kind, text(path));
		}

		/** Writes and waits. @return the errors that this told. */
		std::string errorsOf(EAction action, std::string_view bytes, const std::string& path)
		{
			const size_t before = log.lines().size();
			write(action, bytes, path);
			drain();
			std::string told;
			for (size_t line = before; line < log.lines().size(); ++line)
			{
				told += log.lines()[line].verbosity == ELogVerbosity::Error ? log.lines()[line].text : "no error";
			}
			return told;
		}

		TempDir dir;
		LogCapture log;
	};
} // namespace

TEST_F(ByteDataToFile, WritesOverwritesAndRefusesInTheOrderOfCalls)
{
	const std::string path = dir.path("new/sub/a.bin");
	write(EAction::E_NOT_OVERWRITE, std::string_view("a\0b", 3), path);
	write(EAction::E_NOT_OVERWRITE, "refused", path);
	drain();
	EXPECT_EQ(dir.read("new/sub/a.bin"), std::string("a\0b", 3)) << "the first creates the file, the second is refused";
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "UCorvaneBPLibrary: File exist. Cancel write to file."), 1);
	for (int number = 0; number <= 200; ++number)
	{
		write(EAction::E_OVERWRITE, std::to_string(number), path);
	}
	drain(); // nobody may look at the directories while they change
	HostDirectories::Set(dir.path(), "");
	write(EAction::E_OVERWRITE, "game", "Saved/a.txt", EHTTPCorvFileUpload::E_gd);
	drain();
	EXPECT_EQ(dir.read("new/sub/a.bin") + dir.read("Saved/a.txt"), "200game");
}

TEST_F(ByteDataToFile, LogsWhatItCannotDo)
{
	const std::string old = dir.write("readonly", "old");
	std::filesystem::permissions(old, std::filesystem::perms::owner_read);
	const std::string blocked = dir.write("file", "old") + "/below"; // a file where a directory is needed
	EXPECT_EQ(errorsOf(EAction::E_OVERWRITE, "", dir.path("a")), "UCorvaneBPLibrary: Empty byteData Array.");
	EXPECT_EQ(errorsOf(EAction::E_OVERWRITE, "x", ""), "UCorvaneBPLibrary: FilePath not set.");
	for (const std::string& path : {dir.path(), old, blocked})
	{
		EXPECT_EQ(errorsOf(EAction::E_OVERWRITE, "x", path), "ByteDataToFile: Can't write into " + path + " ");
	}
	EXPECT_EQ(dir.read("readonly"), "old");
	EXPECT_FALSE(dir.exists("a"));
}

TEST_F(ByteDataToFile, NoticesAFullDisk)
{
	// A link to the device that is always full; it is no regular file, so it is written to and not replaced.
	const std::string full = dir.path("full"), later = dir.path("later");
	std::filesystem::create_symlink("/dev/full", full);
	EXPECT_EQ(errorsOf(EAction::E_NOT_OVERWRITE, std::string(100000, 'x'), full), "ByteDataToFile: Can't write into " + full + " ");
	std::string told;
	{
		const FileSizeLimit limit(1000);
		told = errorsOf(EAction::E_NOT_OVERWRITE, std::string(1001, 'x'), later);
	}
	EXPECT_EQ(told, "ByteDataToFile: Can't write into " + later + " ");
	EXPECT_EQ(errorsOf(EAction::E_NOT_OVERWRITE, "there is room again", later), "");
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
