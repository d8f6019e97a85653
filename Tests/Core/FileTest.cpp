#include "GenericPlatform/GenericPlatformFile.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFileManager.h"
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

	std::unique_ptr<FArchive> writer(const std::string& Path, uint32 Flags = FILEWRITE_None)
	{
		return std::unique_ptr<FArchive>(IFileManager::Get().CreateFileWriter(*text(Path), Flags));
	}

	std::unique_ptr<IFileHandle> openWrite(const std::string& Path, bool bAppend, bool bAllowRead = false)
	{
		return std::unique_ptr<IFileHandle>(FPlatformFileManager::Get().GetPlatformFile().OpenWrite(*text(Path), bAppend, bAllowRead));
	}

	std::string readFrom(FArchive& Reader, size_t Number)
	{
		std::string Bytes(Number, '?');
		Reader.Serialize(Bytes.data(), static_cast<int64>(Number));
		return Bytes;
	}

	bool write(IFileHandle& File, std::string_view Bytes)
	{
		return File.Write(reinterpret_cast<const uint8*>(Bytes.data()), static_cast<int64>(Bytes.size()));
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
	const auto bFails = [&](auto Use)
	{
		const std::unique_ptr<FArchive> Reader = reader(Path);
		Use(*Reader);
		return Reader->IsError() && !Reader->Close();
	};
	EXPECT_TRUE(bFails([](FArchive& Reader) { readFrom(Reader, 6); }));
	EXPECT_TRUE(bFails([](FArchive& Reader) { Reader.Seek(-1); }));
	EXPECT_TRUE(bFails([](FArchive& Reader) { Reader.Seek(6); }));
	EXPECT_TRUE(bFails(
		[&](FArchive& Reader)
		{
			fs::resize_file(Path, 2); // somebody cuts the file meanwhile
			readFrom(Reader, 5);
		}));
}

TEST(FileWriter, ReplacesAppendsAndMakesDirectories)
{
	const TempDir Dir;
	const std::string Path = Dir.path("new/sub/a");
	std::string Bytes = "12345";
	for (const uint32 Flags : {FILEWRITE_None, FILEWRITE_Append, FILEWRITE_Append})
	{
		const std::unique_ptr<FArchive> Writer = writer(Path, Flags);
		ASSERT_NE(Writer, nullptr);
		const int64 Before = Writer->TotalSize();
		EXPECT_EQ(Writer->Tell(), Before);
		Writer->Serialize(Bytes.data(), 5);
		EXPECT_EQ(Writer->TotalSize(), Before + 5);
		EXPECT_TRUE(Writer->Close());
	}
	EXPECT_EQ(Dir.read("new/sub/a"), "123451234512345");
	const std::unique_ptr<FArchive> Writer = writer(Path, FILEWRITE_Append);
	Writer->Seek(1);
	Writer->Serialize(Bytes.data(), 1);
	EXPECT_TRUE(Writer->Close());
	EXPECT_EQ(Dir.read("new/sub/a"), "113451234512345");
	EXPECT_TRUE(writer(Path)->Close());
	EXPECT_EQ(Dir.read("new/sub/a"), "");
}

TEST(FileWriter, TellsOfAFullDiskAndOfWrongPositions)
{
	const std::unique_ptr<FArchive> Full = writer("/dev/full", FILEWRITE_Append);
	ASSERT_NE(Full, nullptr);
	char Byte = 'x';
	Full->Serialize(&Byte, 1);
	EXPECT_TRUE(Full->IsError());
	EXPECT_FALSE(Full->Close());
	const TempDir Dir;
	const std::unique_ptr<FArchive> Writer = writer(Dir.path("a"));
	Writer->Seek(-1);
	EXPECT_FALSE(Writer->Close());
}

TEST(FileReaderAndWriter, TouchNothingButFilesThatTheyMay)
{
	const TempDir Dir;
	fs::permissions(Dir.write("readonly", "old"), fs::perms::owner_read);
	ASSERT_EQ(mkfifo(Dir.path("pipe").c_str(), 0600), 0);
	Dir.write("file", "old");
	for (const char* Name : {"", "readonly", "pipe", "file/below", "file/"})
	{
		EXPECT_EQ(writer(Dir.path(Name)), nullptr) << Name;
		EXPECT_EQ(openWrite(Dir.path(Name), false), nullptr) << Name;
	}
	for (const std::string& Path : {Dir.path("missing"), Dir.path(), Dir.path("pipe"), std::string("/dev/zero")})
	{
		EXPECT_EQ(reader(Path), nullptr) << Path;
	}
	EXPECT_EQ(openWrite(Dir.path("missing/a"), true), nullptr) << "a handle makes no directory";
	EXPECT_EQ(Dir.read("readonly") + Dir.read("file"), "oldold");
}

TEST(FileHandle, AppendsReadsBackAndCuts)
{
	const TempDir Dir;
	const std::unique_ptr<IFileHandle> File = openWrite(Dir.write("a", "12345"), true, true);
	ASSERT_NE(File, nullptr);
	EXPECT_EQ(File->Tell(), 5);
	EXPECT_TRUE(write(*File, "tail"));
	uint8 Tail[4];
	EXPECT_TRUE(File->SeekFromEnd(-4) && File->Read(Tail, 4));
	EXPECT_EQ(std::string(Tail, Tail + 4), "tail");
	EXPECT_FALSE(File->Read(Tail, 1)) << "nothing is left";
	EXPECT_FALSE(File->Seek(-1));
	EXPECT_FALSE(File->SeekFromEnd(-10));
	EXPECT_TRUE(File->Truncate(5) && File->Flush(true));
	EXPECT_EQ(File->Size(), 5);
	EXPECT_EQ(Dir.read("a"), "12345");
	EXPECT_FALSE(openWrite(Dir.path("a"), true)->Read(Tail, 1)) << "not opened for reading";
	openWrite(Dir.path("a"), false);
	EXPECT_EQ(Dir.read("a"), "");
}

TEST(FileHandle, PositionsPassFourGigabytes)
{
	const TempDir Dir;
	const int64 Far = 5'000'000'000;
	{
		const std::unique_ptr<IFileHandle> File = openWrite(Dir.path("sparse"), false);
		EXPECT_TRUE(File->Truncate(Far) && File->Seek(Far) && write(*File, "end"));
	}
	EXPECT_EQ(IFileManager::Get().FileSize(*text(Dir.path("sparse"))), Far + 3);
	const std::unique_ptr<FArchive> Reader = reader(Dir.path("sparse"));
	Reader->Seek(Far - 1);
	EXPECT_EQ(readFrom(*Reader, 4), std::string("\0end", 4));
}
