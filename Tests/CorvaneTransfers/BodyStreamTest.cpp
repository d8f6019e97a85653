#include "Upload/BodyStream.h"

#include "ForwardingFiles.h"
#include "QuickPlace.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "TextSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

using testing::HasSubstr;

namespace
{
	/** Counts what is open. */
	class CountedFiles : public ForwardingFiles
	{
	public:
		IFileHandle* OpenRead(const TCHAR* name, bool allowWrite) override
		{
			IFileHandle* handle = ForwardingFiles::OpenRead(name, allowWrite);
			return handle ? new Handle(handle, *this) : nullptr;
		}

		int open = 0;
		int mostOpen = 0;

	private:
		class Handle : public IFileHandle
		{
		public:
			Handle(IFileHandle* lower, CountedFiles& files)
				: Lower(lower)
				, Files(files)
			{
				Files.mostOpen = std::max(Files.mostOpen, ++Files.open);
			}
			~Handle() override { --Files.open; }
			int64 Tell() override { return Lower->Tell(); }
			bool Seek(int64 to) override { return Lower->Seek(to); }
			bool SeekFromEnd(int64 offset) override { return Lower->SeekFromEnd(offset); }
			bool Read(uint8* to, int64 number) override { return Lower->Read(to, number); }
			bool Write(const uint8*, int64) override { return false; }
			bool Flush(const bool) override { return false; }
			bool Truncate(int64) override { return false; }
			int64 Size() override { return Lower->Size(); }

		private:
			const std::unique_ptr<IFileHandle> Lower;
			CountedFiles& Files;
		};
	};

	class BodyStream : public testing::Test
	{
	protected:
		FCorvaneSentFile file(const std::string& path)
		{
			FCorvaneSentFile found;
			EXPECT_TRUE(FCorvaneSentFile::Find(text(path), found).IsOk());
			return found;
		}
		/** Reads to the end or an error. @param piece  bytes at a time. */
		static std::string drain(FCorvaneBodyStream& stream, int64 piece)
		{
			std::string all;
			while (stream.Tell() < stream.TotalSize() && !stream.IsError())
			{
				std::string bytes(static_cast<size_t>(std::min(piece, stream.TotalSize() - stream.Tell())), 'x');
				stream.Serialize(bytes.data(), static_cast<int64>(bytes.size()));
				all += stream.IsError() ? "" : bytes;
				EXPECT_EQ(stream.GetHandedOut(), int64(all.size()));
			}
			return all;
		}

		TempDir Dir{quickPlace()};
	};
} // namespace

TEST_F(BodyStream, IsItsSegmentsWhateverTheCutWithOneFileOpen)
{
	const std::string big = randomBytes(1000);
	const FCorvaneSentFile bigFile = file(Dir.write("big", big));
	const FCorvaneSentFile emptyFile = file(Dir.write("empty", ""));
	FCorvaneHashWish wish;
	ASSERT_TRUE(FCorvaneHashWish::Parse(TEXT("sha256"), wish));
	const std::string hashed = big + big.substr(990);
	const FString hash = CorvaneSha256Of(reinterpret_cast<const uint8*>(hashed.data()), static_cast<int64>(hashed.size()));
	for (const int64 piece : {int64(1), int64(7), int64(500), int64(1 << 20)})
	{
		CountedFiles files;
		FCorvaneBodyStream stream(
			{FCorvaneBodySegment::OfText(text("größe")), FCorvaneBodySegment::OfFile(emptyFile), FCorvaneBodySegment::OfFile(bigFile),
				FCorvaneBodySegment::OfBytes({}), FCorvaneBodySegment::OfFile(bigFile, 990), FCorvaneBodySegment::OfText(TEXT("."))},
			wish);
		EXPECT_EQ(stream.TotalSize(), 7 + 1000 + 10 + 1);
		EXPECT_EQ(drain(stream, piece), "größe" + hashed + ".");
		stream.Seek(0); // such as for a connection that was dead
		std::string first(20, 'x');
		stream.Serialize(first.data(), 20);
		EXPECT_EQ(first, "größe" + big.substr(0, 13));
		EXPECT_EQ(stream.GetHandedOut(), stream.TotalSize() + 20);
		stream.Seek(stream.Tell());
		std::string rest(static_cast<size_t>(stream.TotalSize()) - 20, 'x');
		stream.Serialize(rest.data(), static_cast<int64>(rest.size()));
		const FCorvaneBodyEnd end = stream.Finish();
		EXPECT_TRUE(end.bWhole);
		EXPECT_EQ(utf8(end.Hash), utf8(hash));
		EXPECT_EQ(files.open, 0);
		EXPECT_EQ(files.mostOpen, 1);
	}
}

TEST_F(BodyStream, IsNeverWholeWhenAFileIsNotWhatItWas)
{
	const std::string bytes = randomBytes(1000);
	FCorvaneHashWish other;
	ASSERT_TRUE(FCorvaneHashWish::Parse(text("md5:" + std::string(32, '0')), other));
	struct Case
	{
		const char* what;
		std::function<void(const std::string& path)> change;
		FCorvaneHashWish hash;
		ECorvaneTransferOutcome outcome;
		const char* sentence;
	};
	using O = ECorvaneTransferOutcome;
	const auto keepTime = [](const std::string& path, const std::string& content)
	{
		const auto time = std::filesystem::last_write_time(path);
		std::ofstream(path, std::ios::binary) << content;
		std::filesystem::last_write_time(path, time);
	};
	const Case cases[] = {
		{"longer", [&](const std::string& path) { keepTime(path, bytes + "more"); }, {}, O::CannotRead, "changed while it was sent"},
		{"shorter", [&](const std::string& path) { keepTime(path, bytes.substr(600)); }, {}, O::CannotRead, "changed while it was sent"},
		{"later",
			[](const std::string& path)
			{ std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::seconds(2)); },
			{}, O::CannotRead, "changed while it was sent"},
		{"gone", [](const std::string& path) { std::filesystem::remove(path); }, {}, O::CannotRead, "f"},
		{"another hash", [](const std::string&) {}, other, O::WrongHash, "has the hash"},
	};
	for (const Case& each : cases)
	{
		for (const size_t before : {size_t(0), size_t(500)}) // bytes that were handed out before it changed
		{
			SCOPED_TRACE(testing::Message() << each.what << " after " << before);
			const std::string path = Dir.write("f", bytes);
			int told = 0;
			FCorvaneBodyStream stream({FCorvaneBodySegment::OfFile(file(path))}, each.hash, [&told] { ++told; });
			std::string start(before, 'x');
			stream.Serialize(start.data(), static_cast<int64>(before));
			EXPECT_EQ(start, bytes.substr(0, before));
			each.change(path);
			std::string rest(bytes.size() - before, 'x');
			stream.Serialize(rest.data(), static_cast<int64>(rest.size()));
			EXPECT_TRUE(stream.IsError());
			EXPECT_EQ(rest, std::string(rest.size(), '\0'));
			EXPECT_EQ(stream.GetHandedOut(), int64(before));
			EXPECT_EQ(told, 1);
			const FCorvaneBodyEnd end = stream.Finish();
			EXPECT_FALSE(end.bWhole);
			EXPECT_EQ(end.Result.Failure, each.outcome);
			EXPECT_THAT(utf8(end.Result.Sentence), HasSubstr(each.sentence));
			EXPECT_EQ(utf8(end.Hash), "");
		}
	}
}

TEST_F(BodyStream, LooksAtFilesWithoutAByteToo)
{
	const std::string path = Dir.write("empty", "");
	FCorvaneBodyStream stream({FCorvaneBodySegment::OfFile(file(path))}, {ECorvaneHashKind::Md5, FString()});
	EXPECT_EQ(stream.TotalSize(), 0);
	EXPECT_EQ(utf8(stream.Finish().Hash), "d41d8cd98f00b204e9800998ecf8427e");
	int told = 0;
	FCorvaneBodyStream grown({FCorvaneBodySegment::OfFile(file(path))}, {}, [&told] { ++told; });
	Dir.write("empty", "not any more");
	EXPECT_EQ(grown.Finish().Result.Failure, ECorvaneTransferOutcome::CannotRead);
	EXPECT_EQ(told, 0) << "nobody reads any more";
	FCorvaneSentFile none;
	EXPECT_EQ(FCorvaneSentFile::Find(text(Dir.path()), none).Failure, ECorvaneTransferOutcome::CannotRead) << "a folder";
	std::string beyond(1, 'x');
	stream.Serialize(beyond.data(), 1);
	EXPECT_TRUE(stream.IsError());
}
