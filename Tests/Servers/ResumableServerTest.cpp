#include "ChildProgram.h"
#include "CorvaneUploadResumable.h"
#include "GameLoop.h"
#include "Lab/Behaviours/Tus.h"
#include "Lab/Origin.h"
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

		void expectWholeAfterKills(std::uintmax_t size, std::int64_t pieceBytes, int kills, int mostMilliseconds);

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
			EXPECT_EQ(utf8(report.ReachedAddress), server.url("/files/") + kept().at(0).string());
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

namespace
{
	/**
	 * Kills a program that uploads a file again and again, until that was done often enough, and lets it end then.
	 * @return how often the file was through, the last time among them.
	 */
	int killAndGoOn(const std::vector<std::string>& words, int kills, int mostMilliseconds)
	{
		std::mt19937 random(5);
		ChildProgram program;
		int finished = 0;
		for (int killed = 0; killed < kills;)
		{
			program.start(words);
			const auto moment = std::chrono::milliseconds(random() % static_cast<unsigned>(mostMilliseconds));
			std::jthread killer(
				[&]
				{
					std::this_thread::sleep_for(moment); // the moment is what is tried out
					program.kill();
				});
			const int status = program.wait();
			EXPECT_TRUE(status == -1 || status == static_cast<int>(Outcome::Succeeded)) << status;
			killed += status == -1 ? 1 : 0;
			finished += status == -1 ? 0 : 1;
		}
		program.start(words);
		EXPECT_EQ(program.wait(), static_cast<int>(Outcome::Succeeded));
		return finished + 1;
	}
} // namespace

void ResumableServer::expectWholeAfterKills(std::uintmax_t size, std::int64_t pieceBytes, int kills, int mostMilliseconds)
{
	const std::string path = folder.path("file");
	writeLargeFile(path, size);
	const int finished =
		killAndGoOn({UPLOAD_CHILD, server.url("/files"), path, journals.path(), std::to_string(pieceBytes)}, kills, mostMilliseconds);
	EXPECT_TRUE(fs::is_empty(journals.path()));
	int whole = 0;
	for (const fs::path& name : kept()) // some were begun, and killed before that was noted
	{
		whole += isSame(path, stored.path(name.string())) ? 1 : 0;
	}
	EXPECT_GE(whole, finished); // one that was killed behind its last step is through, too
}

TEST_F(ResumableServer, HasTheFileWholeAfterKillsAtRandomMoments)
{
	expectWholeAfterKills(8 << 20, 64 << 10, 12, 400);
}

TEST_F(ResumableServer, HasALargeFileWholeAfterKillsAtRandomMoments)
{
	expectWholeAfterKills(std::uintmax_t(1) << 30, 16 << 20, 20, 2000);
}

TEST(KilledUpload, SendsNoPieceTwiceThatWasThrough)
{
	constexpr std::uintmax_t size = 8 << 20;
	const TempDir folder, journals;
	writeLargeFile(folder.path("file"), size);
	Lab::Origin origin;
	origin.at("/files*", Lab::tus({.tells = true})); // sums are sent, and a piece without its end is lost
	const int finished = killAndGoOn({UPLOAD_CHILD, origin.url("/files"), folder.path("file"), journals.path(), "65536"}, 12, 300);
	std::uintmax_t came = 0;
	for (const Lab::Exchange& each : origin.log())
	{
		came += each.request->method == "PATCH" && each.status == 204 ? each.request->bodyBytes : 0;
	}
	EXPECT_GE(came, size * static_cast<unsigned>(finished));
	EXPECT_EQ(came % size, 0u);
}
