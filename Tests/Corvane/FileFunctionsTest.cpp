#include "FileKit.h"
#include "Host/Directories.h"
#include "ModuleFixture.h"
#include "TempDir.h"

using Files = UFileFunctionsCorv;

namespace
{
	/** What every function makes of a path, as one text. */
	std::string describe(const std::string& path)
	{
		const FString name = text(path);
		return std::string(Files::fileExists(EKind::E_ad, name) ? "file " : "") +
			   (Files::directoryExists(EKind::E_ad, name) ? "directory " : "") + (Files::isReadOnly(EKind::E_ad, name) ? "readonly " : "") +
			   (Files::getTimeStamp(EKind::E_ad, name) != FDateTime::MinValue() ? "time " : "") +
			   (Files::getAccessTimeStamp(EKind::E_ad, name) != FDateTime::MinValue() ? "access " : "") +
			   std::to_string(Files::fileSize(EKind::E_ad, name));
	}
} // namespace

TEST(FileFunctions, ResolveBothKindsOfPaths)
{
	HostDirectories::Set("../Game", "/base/bin");
	struct Case
	{
		const char* path;
		const char* game;
		const char* absolute;
	};
	const Case cases[] = {
		{"Content/a.txt", "/base/Game/Content/a.txt", "/base/bin/Content/a.txt"},
		{"", "/base/Game/", "/base/bin/"},
		{"/a//b/./c", "/base/Game/a/b/c", "/a/b/c"},
		{"../../../x", "/x", "/x"},
		{"a\\b/", "/base/Game/a/b/", "/base/bin/a/b/"},
		{"\u00fc/\u20ac", "/base/Game/\u00fc/\u20ac", "/base/bin/\u00fc/\u20ac"},
	};
	for (const Case& tested : cases)
	{
		EXPECT_EQ(utf8(Files::getCleanDirectory(EKind::E_gd, text(tested.path))), tested.game) << tested.path;
		EXPECT_EQ(utf8(Files::getCleanDirectory(EKind::E_ad, text(tested.path))), tested.absolute) << tested.path;
		EXPECT_EQ(utf8(Files::getFilenameOnDisk(EKind::E_ad, text(tested.path))), tested.absolute) << tested.path;
	}
}

TEST(FileFunctions, ResolveEachPathOfAMoveByItsOwnKind)
{
	const TempDir dir;
	HostDirectories::Set(dir.path("Game"), dir.path("bin"));
	dir.write("bin/from", "bytes");
	dir.write("Game/old", "old");
	dir.write("bin/folder/file", "");
	std::filesystem::create_directory(dir.path("Game/empty"));
	EXPECT_FALSE(Files::moveFile(EKind::E_gd, "old", EKind::E_ad, "from")) << "nothing is replaced";
	EXPECT_FALSE(Files::moveFile(EKind::E_gd, "empty", EKind::E_ad, "folder")) << "no directory either";
	EXPECT_TRUE(Files::moveFile(EKind::E_gd, "to", EKind::E_ad, "from"));
	EXPECT_EQ(dir.read("Game/to") + dir.read("Game/old"), "bytesold");
	EXPECT_FALSE(dir.exists("bin/from"));
	EXPECT_TRUE(Files::moveFile(EKind::E_ad, "back", EKind::E_gd, "to"));
	EXPECT_EQ(dir.read("bin/back"), "bytes");
}

TEST(FileFunctions, TellWhatIsThere)
{
	const TempDir dir;
	dir.write("file.txt", "12345");
	dir.write("n\u00e4me", "");
	std::filesystem::resize_file(dir.write("sparse", ""), 5'000'000'000);
	const std::pair<std::string, const char*> cases[] = {
		{dir.path("file.txt"), "file time access 5"},
		{dir.path("missing/../file.txt"), "file time access 5"},
		{dir.path() + "//.//file.txt", "file time access 5"},
		{dir.path("n\u00e4me"), "file time access 0"},
		{dir.path("sparse"), "file time access 5000000000"},
		{dir.path(), "directory time access -1"},
		{dir.path() + "/", "directory time access -1"},
		{dir.path("file.txt/"), "-1"},
		{dir.path("file.txt/below"), "-1"},
		{dir.path("missing"), "-1"},
		{dir.path(std::string(256, 'x')), "-1"},
		{dir.path() + std::string(5000, '/') + std::string(5000, 'x'), "-1"},
	};
	for (const auto& [path, description] : cases)
	{
		EXPECT_EQ(describe(path), description) << path;
	}
}

TEST(FileFunctions, MakeAndRemoveDirectories)
{
	const TempDir dir;
	dir.write("file", "x");
	const FString name = text(dir.path("\u00fc/"));
	EXPECT_TRUE(Files::createDirectory(EKind::E_ad, name));
	EXPECT_TRUE(Files::createDirectory(EKind::E_ad, name)) << "it was there";
	EXPECT_FALSE(Files::createDirectory(EKind::E_ad, text(dir.path("a/b")))) << "one level";
	EXPECT_FALSE(Files::createDirectory(EKind::E_ad, text(dir.path("file"))));
	EXPECT_FALSE(Files::deleteDirectory(EKind::E_ad, text(dir.path("file"))));
	EXPECT_FALSE(Files::deleteDirectory(EKind::E_ad, text(dir.path()))) << "not empty";
	EXPECT_TRUE(Files::deleteDirectory(EKind::E_ad, name));
	EXPECT_TRUE(Files::deleteDirectory(EKind::E_ad, name)) << "there is none";
	EXPECT_FALSE(Files::deleteFile(EKind::E_ad, text(dir.path())));
	EXPECT_EQ(dir.read("file"), "x");
	EXPECT_TRUE(Files::deleteFile(EKind::E_ad, text(dir.path("file"))));
	EXPECT_FALSE(Files::deleteFile(EKind::E_ad, text(dir.path("file")))) << "there is none";
}

TEST(FileFunctions, LeaveReadOnlyFilesAlone)
{
	const TempDir dir;
	const FString name = text(dir.write("file", "old"));
	bool success = true;
	EXPECT_TRUE(Files::setReadOnly(EKind::E_ad, name, true));
	EXPECT_TRUE(Files::isReadOnly(EKind::E_ad, name));
	Files::writeBytesToFile(EKind::E_ad, name, toArray("new"), success);
	EXPECT_FALSE(success);
	Files::writeStringToFile(EKind::E_ad, "new", name, success);
	EXPECT_FALSE(success);
	Files::addBytesToFile(EKind::E_ad, name, toArray("new"), success);
	EXPECT_FALSE(success);
	EXPECT_FALSE(Files::deleteFile(EKind::E_ad, name));
	EXPECT_EQ(dir.read("file"), "old");
	EXPECT_TRUE(Files::setReadOnly(EKind::E_ad, name, false));
	Files::addBytesToFile(EKind::E_ad, name, toArray("er"), success);
	EXPECT_TRUE(success);
	EXPECT_EQ(dir.read("file"), "older");
	EXPECT_FALSE(Files::setReadOnly(EKind::E_ad, text(dir.path("missing")), true));
	EXPECT_FALSE(Files::setReadOnly(EKind::E_ad, text(dir.path()), true)) << "a directory";
}

TEST(FileFunctions, SetTheTimeOfTheLastChangeOnly)
{
	const TempDir dir;
	const FString name = text(dir.write("file", "x"));
	const FDateTime access = Files::getAccessTimeStamp(EKind::E_ad, name);
	const FDateTime time = FDateTime::FromUnixTimestamp(1'000'000'000);
	Files::setTimeStamp(EKind::E_ad, name, time);
	EXPECT_EQ(Files::getTimeStamp(EKind::E_ad, name), time);
	EXPECT_EQ(Files::getAccessTimeStamp(EKind::E_ad, name), access);
	EXPECT_EQ(outputOf("stat -c %Y '" + utf8(name) + "'"), "1000000000\n") << "the time is UTC";
	Files::setTimeStamp(EKind::E_ad, text(dir.path("missing")), time);
	EXPECT_FALSE(dir.exists("missing"));
}
