#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"
#include "HAL/PlatformMisc.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace
{
	class PlatformFile : public testing::Test
	{
	protected:
		bool move(const std::string& To, const std::string& From) { return Files.MoveFile(*text(To), *text(From)); }
		bool copy(const char* To, const char* From) { return Files.CopyFile(*text(Dir.path(To)), *text(Dir.path(From))); }

		IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
		const TempDir Dir;
	};
} // namespace

TEST_F(PlatformFile, LinksToFilesAreFilesAndLinksToDirectoriesAreNotRemoved)
{
	fs::create_symlink(Dir.write("folder/file", "12345"), Dir.path("link"));
	EXPECT_TRUE(Files.FileExists(*text(Dir.path("link"))));
	EXPECT_EQ(Files.FileSize(*text(Dir.path("link"))), 5);
	fs::create_directory(Dir.path("empty"));
	fs::create_directory_symlink(Dir.path("empty"), Dir.path("shortcut"));
	EXPECT_FALSE(Files.DeleteDirectory(*text(Dir.path("shortcut"))));
	EXPECT_TRUE(Dir.exists("shortcut"));
}

TEST_F(PlatformFile, MovesAndReplacesAlsoOnAnotherDisk)
{
	const fs::path OtherDisk = fs::path("/dev/shm") / fs::path(Dir.path()).filename();
	std::error_code Missing;
	const bool bHasOther = fs::create_directory(OtherDisk, Missing);
	const FDateTime Before1970(FDateTime::FromUnixTimestamp(0).GetTicks() - 1);
	for (const auto& [Directory, Time] : {std::pair(fs::path(Dir.path()), Before1970),
			 {bHasOther ? OtherDisk : fs::path(Dir.path()), FDateTime::FromUnixTimestamp(9'000'000'000)}})
	{
		const std::string There = Directory / "to";
		const std::string From = Dir.write("from", "new");
		fs::permissions(From, fs::perms::owner_read);
		Files.SetTimeStamp(*text(From), Time);
		EXPECT_TRUE(move(There, From));
		EXPECT_FALSE(Dir.exists("from"));
		EXPECT_EQ(Files.GetTimeStamp(*text(There)), Time);
		EXPECT_TRUE(Files.IsReadOnly(*text(There)));
		Dir.write("from", "newer");
		EXPECT_FALSE(move(Directory / "missing/to", From));
		EXPECT_FALSE(move(There, Dir.path("missing")));
		EXPECT_EQ(Dir.read("from") + std::to_string(fs::file_size(There)), "newer3");
		EXPECT_TRUE(move(There, From)) << "it replaces";
		EXPECT_EQ(fs::file_size(There), 5u);
		EXPECT_EQ(std::distance(fs::directory_iterator(Directory), {}), 1);
		fs::remove(There);
	}
	fs::remove(OtherDisk);
}

TEST_F(PlatformFile, CopiesToANewFileThatCanBeWritten)
{
	fs::permissions(Dir.write("from", "bytes"), fs::perms::owner_read);
	EXPECT_TRUE(copy("to", "from"));
	EXPECT_EQ(Dir.read("to"), "bytes");
	EXPECT_FALSE(Files.IsReadOnly(*text(Dir.path("to"))));
	EXPECT_FALSE(IFileManager::Get().Delete(*text(Dir.path("from"))));
	Dir.write("old", "old");
	EXPECT_FALSE(copy("old", "from") || copy("from", "from") || copy("missing/to", "from"));
	EXPECT_FALSE(copy("to2", "missing") || copy("to2", ""));
	EXPECT_FALSE(Dir.exists("to2"));
	EXPECT_EQ(Dir.read("old") + Dir.read("from"), "oldbytes");
}

TEST_F(PlatformFile, AFileHasOneWriterAndAnyNumberOfReaders)
{
	const FString File = text(Dir.write("file", "bytes"));
	std::unique_ptr<IFileHandle> Writer(Files.OpenWrite(*File, true));
	ASSERT_TRUE(Writer);
	EXPECT_FALSE(std::unique_ptr<IFileHandle>(Files.OpenWrite(*File)));
	EXPECT_EQ(Dir.read("file"), "bytes") << "whoever is refused has not emptied it";
	EXPECT_TRUE(std::unique_ptr<IFileHandle>(Files.OpenRead(*File, true)));
	Writer.reset();
	EXPECT_TRUE(std::unique_ptr<IFileHandle>(Files.OpenWrite(*File)));
}

TEST_F(PlatformFile, MakesFoldersAndTellsTheRoomOnTheirDisk)
{
	const FString Folder = text(Dir.path("a/b/c"));
	EXPECT_TRUE(Files.CreateDirectoryTree(*Folder) && Files.CreateDirectoryTree(*Folder));
	EXPECT_FALSE(Files.CreateDirectoryTree(*text(Dir.write("file", "") + "/a")));
	uint64 Total = 0;
	uint64 Free = 0;
	EXPECT_TRUE(FPlatformMisc::GetDiskTotalAndFreeSpace(Folder, Total, Free));
	EXPECT_TRUE(Free > 0 && Free <= Total);
	EXPECT_FALSE(FPlatformMisc::GetDiskTotalAndFreeSpace(text(Dir.path("missing")), Total, Free));
}
