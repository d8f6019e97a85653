#include "HAL/FileManager.h"
#include "RandomBytes.h"
#include "Serialization/Archive.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace
{
	std::unique_ptr<FArchive> reader(const std::string& Path)
	{
		return std::unique_ptr<FArchive>(IFileManager::Get().CreateFileReader(*text(Path)));
	}

	std::string readFrom(FArchive& Reader, size_t Number)
	{
		std::string Bytes(Number, '?');
		Reader.Serialize(Bytes.data(), static_cast<int64>(Number));
		return Bytes;
	}
} // namespace

TEST(FileReader, ReadsAnyPiecesInAnyOrder)
{
	const TempDir Dir;
	const std::string Bytes = randomBytes(300'000); // several times its buffer
	const std::unique_ptr<FArchive> Reader = reader(Dir.write("a", Bytes));
	EXPECT_EQ(Reader->TotalSize(), 300'000);
	const std::pair<int64, size_t> Pieces[] = {{0, 1024}, {1024, 1024}, {500, 10}, {65'000, 2'000}, {64'000, 3'000}, {299'999, 1},
		{0, 300'000}, {65'530, 100'000}, {65'530, 100'000}, {300'000, 0}, {7, 65'536}};
	for (const auto& [Start, Number] : Pieces)
	{
		Reader->Seek(Start);
		EXPECT_TRUE(readFrom(*Reader, Number) == Bytes.substr(static_cast<size_t>(Start), Number)) << Start << "+" << Number;
		EXPECT_EQ(Reader->Tell(), Start + static_cast<int64>(Number));
	}
	EXPECT_TRUE(Reader->Close());
}

TEST(FileReader, EndsAndPositionsOutsideAreErrors)
{
	const TempDir Dir;
	const std::string Path = Dir.write("a", "12345");
	for (const int64 Position : {-1, 6, 0, 1})
	{
		const std::unique_ptr<FArchive> Reader = reader(Path);
		Reader->Seek(Position);
		EXPECT_EQ(Reader->IsError(), Position < 0 || Position > 5);
		fs::resize_file(Path, Position == 1 ? 2 : 5); // somebody cuts the file meanwhile
		readFrom(*Reader, Position == 1 ? 4 : 6);
		EXPECT_TRUE(Reader->IsError());
		EXPECT_FALSE(Reader->Close());
	}
}

TEST(FileReaderAndWriter, DoNotWaitForPipesAndReadNoDevices)
{
	const TempDir Dir;
	const std::string Pipe = Dir.path("pipe");
	ASSERT_EQ(mkfifo(Pipe.c_str(), 0600), 0);
	EXPECT_EQ(IFileManager::Get().CreateFileWriter(*text(Pipe)), nullptr);
	EXPECT_EQ(reader(Pipe), nullptr);
	EXPECT_EQ(reader("/dev/zero"), nullptr);
}
