#include "ChildProgram.h"
#include "CorvaneUploadResumable.h"
#include "GameLoop.h"
#include "LargeFile.h"
#include "OtherServer.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

using Outcome = ECorvaneTransferOutcome;
using testing::HasSubstr;

namespace
{
	namespace fs = std::filesystem;

	/** A real server of resumable uploads, and what becomes of files that are sent to it. */
	class ResumableServer : public ::testing::Test
	{
	protected:
		FCorvaneResumableOptions options(int64 pieceBytes) const
		{
			FCorvaneResumableOptions made;
			made.PieceBytes = pieceBytes;
			made.FirstWaitSeconds = 0.001;
			made.JournalFolder = text(journals.path());
			return made;
		}

		UCorvaneUploadResumable* start(const std::string& path, const FCorvaneResumableOptions& options)
		{
			return UCorvaneUploadResumable::Start(
				text(server.url("/files")), text(path), options, [this](const FCorvaneTransferReport& told) { reports.push_back(told); });
		}

		FCorvaneTransferReport finish(size_t number = 1)
		{
			EXPECT_TRUE(loop.WaitFor([&] { return reports.size() >= number; }, patienceSeconds));
			EXPECT_EQ(reports.size(), number);
			return reports.empty() ? FCorvaneTransferReport() : reports.back();
		}

		/** What the server keeps: files, each with its description under the same name and ".json". */
		std::vector<fs::path> kept() const
		{
			std::vector<fs::path> files;
			for (const fs::directory_entry& each : fs::directory_iterator(stored.path()))
			{
				if (each.path().extension() != ".json")
				{
					files.push_back(each.path().filename());
				}
			}
			return files;
		}

		void expectKept(const std::string& bytes)
		{
			const std::vector<fs::path> files = kept();
			ASSERT_EQ(files.size(), 1u);
			EXPECT_TRUE(stored.read(files[0].string()) == bytes);
			EXPECT_TRUE(fs::is_empty(journals.path())) << "nothing is left of the upload";
		}

		void killAndGoOn(std::uintmax_t size, std::int64_t pieceBytes, int kills, int mostMilliseconds);

		const TempDir folder, stored, journals;
		OtherServer server{{"node", SERVERS "/tus.mjs", SERVER_PACKAGES, stored.path()}};
		FGameLoop loop;
		std::vector<FCorvaneTransferReport> reports;
	};

	bool isSame(const fs::path& one, const fs::path& other)
	{
		return std::system(("cmp -s '" + one.string() + "' '" + other.string() + "'").c_str()) == 0;
	}
} // namespace

TEST_F(ResumableServer, HasTheFileWholeWhateverItsSize)
{
	constexpr int64 piece = 1024;
	for (const size_t size : {size_t(0), size_t(1), size_t(1024), size_t(1025), size_t(10'000)})
	{
		for (const bool atOnce : {false, true})
		{
			SCOPED_TRACE(std::to_string(size) + (atOnce ? " at once" : ""));
			const std::string bytes = randomBytes(size);
			FCorvaneResumableOptions wishes = options(piece);
			wishes.bFirstPieceAtOnce = atOnce;
			wishes.Hash = TEXT("sha1");
			wishes.Metadata.Add(TEXT("folder"), text("Grüße, \"alle\""));
			reports.clear();
			start(folder.write("Bild ä.png", bytes), wishes);
			const FCorvaneTransferReport report = finish();
			EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
			EXPECT_EQ(report.TransferredBytes, static_cast<int64>(size));
			EXPECT_EQ(report.Attempts, static_cast<int32>((size + piece - 1) / piece) + (atOnce && size > 0 ? 0 : 1));
			EXPECT_EQ(report.Hash.Len(), 40);
			expectKept(bytes);
			const fs::path name = kept()[0];
			const std::string told = stored.read(name.string() + ".json");
			EXPECT_THAT(told, AllOf(HasSubstr("\"Bild ä.png\""), HasSubstr("\"Grüße, \\\"alle\\\"\"")));
			fs::remove(stored.path(name.string()));
			fs::remove(stored.path(name.string() + ".json"));
		}
	}
}

TEST_F(ResumableServer, IsGoneOnToAfterAPauseAndThrowsAwayWhatIsCancelled)
{
	const std::string path = folder.path("large");
	writeLargeFile(path, 24 << 20);
	FCorvaneResumableOptions wishes = options(1 << 20);
	wishes.bTerminateOnCancel = true;
	UCorvaneUploadResumable* upload = start(path, wishes);
	const auto moves = [&] { return upload->GetReport().TransferredBytes > 0; };
	ASSERT_TRUE(loop.WaitFor(moves, patienceSeconds));
	upload->Pause();
	ASSERT_TRUE(loop.WaitFor([&] { return upload->IsPaused(); }, patienceSeconds));
	start(path, wishes);
	EXPECT_EQ(finish(1).Outcome, Outcome::Refused) << "it is being sent already";
	ChildProgram other;
	other.start({UPLOAD_CHILD, server.url("/files"), path, journals.path(), "1000000"});
	EXPECT_EQ(other.wait(), static_cast<int>(Outcome::Refused)) << "also by another program";
	upload->Continue();
	EXPECT_EQ(finish(2).Outcome, Outcome::Succeeded);
	ASSERT_EQ(kept().size(), 1u);
	EXPECT_TRUE(isSame(path, stored.path(kept()[0].string())));

	upload = start(path, wishes);
	ASSERT_TRUE(loop.WaitFor(moves, patienceSeconds));
	upload->Cancel();
	const FCorvaneTransferReport cancelled = finish(3);
	EXPECT_EQ(cancelled.Outcome, Outcome::Cancelled) << utf8(cancelled.Sentence);
	EXPECT_THAT(utf8(cancelled.Sentence), HasSubstr("thrown it away"));
	EXPECT_EQ(kept().size(), 1u);
	EXPECT_TRUE(fs::is_empty(journals.path()));
}

/** A program is killed again and again until it has got through often enough, and the file is whole in the end. */
void ResumableServer::killAndGoOn(std::uintmax_t size, std::int64_t pieceBytes, int kills, int mostMilliseconds)
{
	const std::string path = folder.path("file");
	writeLargeFile(path, size);
	std::mt19937 random(5);
	ChildProgram program;
	const auto upload = [&] { program.start({UPLOAD_CHILD, server.url("/files"), path, journals.path(), std::to_string(pieceBytes)}); };
	for (int killed = 0; killed < kills;)
	{
		upload();
		const auto moment = std::chrono::milliseconds(random() % static_cast<unsigned>(mostMilliseconds));
		std::jthread killer(
			[&]
			{
				std::this_thread::sleep_for(moment); // the moment is what is tried out
				program.kill();
			});
		const int status = program.wait();
		ASSERT_TRUE(status == -1 || status == static_cast<int>(Outcome::Succeeded)) << status;
		killed += status == -1 ? 1 : 0;
	}
	upload();
	ASSERT_EQ(program.wait(), static_cast<int>(Outcome::Succeeded));
	EXPECT_TRUE(fs::is_empty(journals.path()));
	for (const fs::path& name : kept())
	{
		const bool isWhole = fs::file_size(stored.path(name.string())) == size;
		EXPECT_TRUE(!isWhole || isSame(path, stored.path(name.string())));
	}
	EXPECT_GE(kept().size(), 1u);
}

TEST_F(ResumableServer, HasTheFileWholeAfterKillsAtRandomMoments)
{
	killAndGoOn(8 << 20, 64 << 10, 12, 400);
}

TEST_F(ResumableServer, HasALargeFileWholeAfterKillsAtRandomMoments)
{
	killAndGoOn(std::uintmax_t(1) << 30, 16 << 20, 20, 2000);
}
