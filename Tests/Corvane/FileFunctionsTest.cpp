#include "FileKit.h"
#include "Host/Directories.h"
#include "ModuleFixture.h"

namespace
{
	class FileFunctions : public FileTest
	{
	protected:
		/** What every function makes of a path, as one text. */
		static std::string describe(const std::string& path)
		{
			const FString name = text(path);
			const auto word = [](bool bHolds, const char* told) { return std::string(bHolds ? told : ""); };
			return word(Files::fileExists(EKind::E_ad, name), "file ") + word(Files::directoryExists(EKind::E_ad, name), "directory ") +
				   word(Files::isReadOnly(EKind::E_ad, name), "readonly ") +
				   word(Files::getTimeStamp(EKind::E_ad, name) != FDateTime::MinValue(), "time ") +
				   word(Files::getAccessTimeStamp(EKind::E_ad, name) != FDateTime::MinValue(), "access ") +
				   std::to_string(Files::fileSize(EKind::E_ad, name));
		}

		FString at(const char* name) const { return text(dir.path(name)); }
	};
} // namespace

TEST_F(FileFunctions, ResolveBothKindsOfPaths)
{
	HostDirectories::Set("../Game", "/base/bin");
	const std::tuple<const char*, const char*, const char*> cases[] = {
		{"Content/a.txt", "/base/Game/Content/a.txt", "/base/bin/Content/a.txt"},
		{"", "/base/Game/", "/base/bin/"},
		{"/a//b/./c", "/base/Game/a/b/c", "/a/b/c"},
		{"../../../x", "/x", "/x"},
		{"a\\b/", "/base/Game/a/b/", "/base/bin/a/b/"},
		{"\u00fc/\u20ac", "/base/Game/\u00fc/\u20ac", "/base/bin/\u00fc/\u20ac"},
	};
	for (const auto& [path, game, absolute] : cases)
	{
		EXPECT_EQ(utf8(Files::getCleanDirectory(EKind::E_gd, text(path))), game) << path;
		EXPECT_EQ(utf8(Files::getCleanDirectory(EKind::E_ad, text(path))), absolute) << path;
		EXPECT_EQ(utf8(Files::getFilenameOnDisk(EKind::E_ad, text(path))), absolute) << path;
	}
}

TEST_F(FileFunctions, ResolveEachPathOfAMoveByItsOwnKind)
{
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

TEST_F(FileFunctions, TellWhatIsThere)
{
	std::filesystem::resize_file(dir.write("n\u00e4me", ""), 5'000'000'000);
	const std::pair<std::string, const char*> cases[] = {
		{dir.path("file"), "file time access 1"},
		{dir.path("missing/../file"), "file time access 1"},
		{dir.path() + "//.//file", "file time access 1"},
		{dir.path("n\u00e4me"), "file time access 5000000000"},
		{dir.path(), "directory time access -1"},
		{dir.path() + "/", "directory time access -1"},
		{dir.path("file/"), "-1"},
		{dir.path("file/below"), "-1"},
		{dir.path("missing"), "-1"},
		{dir.path(std::string(256, 'x')), "-1"},
		{dir.path() + std::string(5000, '/') + std::string(5000, 'x'), "-1"},
	};
	for (const auto& [path, description] : cases)
	{
		EXPECT_EQ(describe(path), description) << path;
	}
}

TEST_F(FileFunctions, MakeAndRemoveDirectories)
{
	const FString name = at("\u00fc/");
	EXPECT_TRUE(Files::createDirectory(EKind::E_ad, name));
	EXPECT_TRUE(Files::createDirectory(EKind::E_ad, name)) << "it was there";
	EXPECT_FALSE(Files::createDirectory(EKind::E_ad, at("a/b"))) << "one level";
	EXPECT_FALSE(Files::createDirectory(EKind::E_ad, at("file")) || Files::deleteDirectory(EKind::E_ad, at("file")));
	EXPECT_FALSE(Files::deleteDirectory(EKind::E_ad, at(""))) << "not empty";
	EXPECT_TRUE(Files::deleteDirectory(EKind::E_ad, name));
	EXPECT_TRUE(Files::deleteDirectory(EKind::E_ad, name)) << "there is none";
	EXPECT_FALSE(Files::deleteFile(EKind::E_ad, at("")));
	EXPECT_EQ(dir.read("file"), "x");
	EXPECT_TRUE(Files::deleteFile(EKind::E_ad, at("file")));
	EXPECT_FALSE(Files::deleteFile(EKind::E_ad, at("file"))) << "there is none";
}

TEST_F(FileFunctions, LeaveReadOnlyFilesAlone)
{
	EXPECT_TRUE(Files::setReadOnly(EKind::E_ad, at("file"), true));
	EXPECT_EQ(describe(file), "file readonly time access 1");
	EXPECT_FALSE(write(file, "new") || writeText(file, "new") || add(file, "new") || Files::deleteFile(EKind::E_ad, at("file")));
	EXPECT_EQ(dir.read("file"), "x");
	EXPECT_TRUE(Files::setReadOnly(EKind::E_ad, at("file"), false));
	EXPECT_TRUE(add(file, "yz"));
	EXPECT_EQ(dir.read("file"), "xyz");
	EXPECT_FALSE(Files::setReadOnly(EKind::E_ad, at("missing"), true) || Files::setReadOnly(EKind::E_ad, at(""), true));
}

TEST_F(FileFunctions, SetTheTimeOfTheLastChangeOnly)
{
	const FDateTime access = Files::getAccessTimeStamp(EKind::E_ad, at("file"));
	const FDateTime time = FDateTime::FromUnixTimestamp(1'000'000'000);
	Files::setTimeStamp(EKind::E_ad, at("file"), time);
	EXPECT_EQ(Files::getTimeStamp(EKind::E_ad, at("file")), time);
	EXPECT_EQ(Files::getAccessTimeStamp(EKind::E_ad, at("file")), access);
	EXPECT_EQ(outputOf("stat -c %Y '" + file + "'"), "1000000000\n") << "the time is UTC";
	Files::setTimeStamp(EKind::E_ad, at("missing"), time);
	EXPECT_FALSE(dir.exists("missing"));
}
