#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;

namespace
{
	class PlatformFile : public testing::Test
	{
	protected:
		bool move(const std::string& To, const std::string& From) { return Files.MoveFile(*text(To), *text(From)); }
		bool copy(const std::string& To, const std::string& From) { return Files.CopyFile(*text(To), *text(From)); }

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
	EXPECT_FALSE(Files.CreateDirectory(*text(Dir.path("link"))));
	EXPECT_TRUE(Dir.exists("shortcut"));
}

TEST_F(PlatformFile, FindsTheFilesOfADirectory)
{
	for (const char* Name : {"\u00fc.txt", "b.TXT", "btxt", "below/c.txt"})
	{
		Dir.write(Name, "");
	}
	const auto Find = [this](const TCHAR* Extension)
	{
		TArray<FString> Found;
		IFileManager::Get().FindFiles(Found, *text(Dir.path()), Extension);
		IFileManager::Get().FindFiles(Found, *text(Dir.path("missing")), Extension);
		std::multiset<std::string> Names;
		for (const FString& Name : Found)
		{
			Names.insert(utf8(Name));
		}
		return Names;
	};
	EXPECT_EQ(Find(nullptr), (std::multiset<std::string>{"b.TXT", "btxt", "\u00fc.txt"}));
	EXPECT_EQ(Find(TEXT("txt")), (std::multiset<std::string>{"\u00fc.txt"}));
	EXPECT_EQ(Find(TEXT(".TXT")), (std::multiset<std::string>{"b.TXT"}));
}

TEST_F(PlatformFile, MovesAndReplaces)
{
	Dir.write("from", "new");
	Dir.write("old", "old");
	EXPECT_FALSE(move(Dir.path("missing/to"), Dir.path("from")));
	EXPECT_FALSE(move(Dir.path("old"), Dir.path("missing")));
	EXPECT_EQ(Dir.read("from") + Dir.read("old"), "newold");
	EXPECT_TRUE(move(Dir.path("old"), Dir.path("from")));
	EXPECT_TRUE(move(Dir.path("to"), Dir.path("old")));
	EXPECT_FALSE(Dir.exists("from") || Dir.exists("old"));
	EXPECT_EQ(Dir.read("to"), "new");
}

TEST_F(PlatformFile, MovesToAnotherDisk)
{
	std::error_code Missing;
	const fs::path OtherDisk = fs::path("/dev/shm") / Dir.path().substr(1 + Dir.path().rfind('/'));
	if (!fs::create_directory(OtherDisk, Missing))
	{
		GTEST_SKIP() << "no other disk";
	}
	const std::string There = OtherDisk / "to";
	Dir.write("from", "new");
	fs::permissions(Dir.path("from"), fs::perms::owner_read);
	const FDateTime Time = FDateTime::FromUnixTimestamp(1'000'000'000);
	Files.SetTimeStamp(*text(Dir.path("from")), Time);
	EXPECT_TRUE(move(There, Dir.path("from")));
	EXPECT_FALSE(Dir.exists("from"));
	EXPECT_EQ(Files.GetTimeStamp(*text(There)), Time);
	EXPECT_TRUE(Files.IsReadOnly(*text(There)));
	Dir.write("from", "newer");
	EXPECT_FALSE(move(OtherDisk / "missing/to", Dir.path("from")));
	EXPECT_EQ(Dir.read("from") + std::to_string(fs::file_size(There)), "newer3");
	EXPECT_TRUE(move(There, Dir.path("from"))) << "here, too, it replaces";
	EXPECT_EQ(fs::file_size(There), 5u);
	EXPECT_EQ(std::distance(fs::directory_iterator(OtherDisk), {}), 1);
	fs::remove_all(OtherDisk);
}

TEST_F(PlatformFile, CopiesToANewFileThatCanBeWritten)
{
	fs::permissions(Dir.write("from", "bytes"), fs::perms::owner_read);
	EXPECT_TRUE(copy(Dir.path("to"), Dir.path("from")));
	EXPECT_EQ(Dir.read("to"), "bytes");
	EXPECT_FALSE(Files.IsReadOnly(*text(Dir.path("to"))));
	Dir.write("old", "old");
	EXPECT_FALSE(copy(Dir.path("old"), Dir.path("from")));
	EXPECT_FALSE(copy(Dir.path("from"), Dir.path("from")));
	EXPECT_FALSE(copy(Dir.path("to2"), Dir.path("missing")));
	EXPECT_FALSE(copy(Dir.path("to2"), Dir.path()));
	EXPECT_FALSE(copy(Dir.path("missing/to"), Dir.path("from")));
	EXPECT_FALSE(Dir.exists("to2"));
	EXPECT_EQ(Dir.read("old") + Dir.read("from"), "oldbytes");
}

TEST_F(PlatformFile, ReadOnlyFilesStayUnlessTheyMayGo)
{
	const FString Path = text(Dir.write("file", "x"));
	EXPECT_TRUE(Files.SetReadOnly(*Path, true));
	EXPECT_FALSE(Files.DeleteFile(*Path));
	EXPECT_FALSE(IFileManager::Get().Delete(*Path));
	EXPECT_EQ(Dir.read("file"), "x");
	EXPECT_TRUE(IFileManager::Get().Delete(*Path, true, true));
	EXPECT_FALSE(Dir.exists("file"));
	EXPECT_TRUE(IFileManager::Get().Delete(*Path));
	EXPECT_FALSE(IFileManager::Get().Delete(*Path, true));
}

TEST_F(PlatformFile, TimesReachOverCenturies)
{
	const FString Path = text(Dir.write("file", "x"));
	for (const FDateTime Time : {FDateTime(FDateTime::FromUnixTimestamp(0).GetTicks() - 1), FDateTime(638'000'000'000'000'001),
			 FDateTime::FromUnixTimestamp(13'000'000'000)})
	{
		Files.SetTimeStamp(*Path, Time);
		EXPECT_EQ(Files.GetTimeStamp(*Path), Time) << Time.GetTicks();
	}
	EXPECT_GT(Files.GetAccessTimeStamp(*Path), FDateTime::FromUnixTimestamp(1'700'000'000));
}
