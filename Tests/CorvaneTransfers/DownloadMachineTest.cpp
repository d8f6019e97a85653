#include "DownloadModel.h"
#include "TextSupport.h"

#include <gtest/gtest.h>
#include <map>

using Outcome = ECorvaneTransferOutcome;
using Validator = ModelServer::Validator;

namespace
{
	/** A server that does all that servers do, each with its own temper. */
	ModelServer temper(Dice& dice)
	{
		ModelServer server;
		const auto often = [&dice](double most) { return dice.chance(0.5) ? dice.fraction() * most : 0.0; };
		server.validator = static_cast<Validator>(dice.upTo(4));
		server.versions = {dice.bytes(dice.chance(0.05) ? 50'000 + dice.upTo(150'000) : dice.upTo(2000))};
		server.drops = often(0.9);
		server.changes = often(0.3);
		server.busy = often(0.5);
		server.ignoresRanges = often(0.3);
		server.ignoresIfRange = often(1);
		server.shifts = often(0.2);
		server.partsOnly = often(0.5);
		server.hidesTotal = often(0.5);
		server.hidesLength = often(0.5);
		server.noConnection = often(0.5);
		server.tooLong = often(0.2);
		server.errorPage = often(0.02);
		server.packs = often(0.1);
		return server;
	}

	FCorvaneDownloadOptions habits(Dice& dice, const ModelServer& server)
	{
		FCorvaneDownloadOptions options;
		options.Attempts = static_cast<int32>(1 + dice.upTo(6));
		options.LongestWaitSeconds = dice.chance(0.2) ? 3600 : 30;
		options.FirstWaitSeconds = dice.fraction() * 5;
		options.BytesPerSecond = dice.chance(0.2) ? 4000 + dice.upTo(200'000) : 0;
		options.ExpectedSize = dice.chance(0.2) ? static_cast<int64>(server.versions[0].size()) + dice.upTo(1) : -1;
		return options;
	}

	/** What all runs together came to, so that no kind of run is missing unnoticed. */
	struct Tally
	{
		std::map<Outcome, int> outcomes;
		int appended = 0, compared = 0, restarts = 0, takenOver = 0;
	};

	void check(const ModelRun& run, const ModelServer& server, const ModelDisk& disk, const FCorvaneDownloadOptions& options)
	{
		const FCorvaneDownloadReport& report = run.report();
		EXPECT_EQ(run.told, 1);
		EXPECT_NE(report.Outcome, Outcome::Running);
		EXPECT_FALSE(report.Sentence.IsEmpty());
		EXPECT_LE(run.longestWait, options.LongestWaitSeconds);
		EXPECT_EQ(report.Attempts, static_cast<int32>(run.questions.size()));
		EXPECT_EQ(report.Restarts, report.RestartReasons.Num());
		EXPECT_EQ(utf8(report.AskedAddress), "http://host/file?key");
		if (report.Outcome == Outcome::Succeeded)
		{
			EXPECT_TRUE(server.has(disk.target)) << "these bytes were never the file";
			EXPECT_EQ(report.TotalBytes, static_cast<int64>(disk.target.size()));
			EXPECT_GE(report.TransferredBytes + report.TakenOverBytes, report.TotalBytes);
		}
		else
		{
			EXPECT_EQ(disk.target, "old");
			EXPECT_EQ(report.BytesLeft, static_cast<int64>(disk.part.size()));
		}
	}

	/** One download, started anew when the program had ended, each time with a little less on disk. */
	void simulate(unsigned seed, Tally& tally)
	{
		Dice dice(seed);
		ModelServer server = temper(dice);
		const FCorvaneDownloadOptions options = habits(dice, server);
		ModelDisk disk;
		disk.target = "old";
		disk.hasTarget = true;
		for (bool ended = true; ended;)
		{
			ModelRun run(server, disk, dice, options);
			run.pauses = run.cancels = run.ends = dice.chance(0.5) ? 0.05 : 0;
			run.diskFull = dice.chance(0.1) ? 0.05 : 0;
			ASSERT_TRUE(run.run()) << "it came to no end";
			check(run, server, disk, options);
			++tally.outcomes[run.report().Outcome];
			tally.appended += run.appended;
			tally.compared += run.compared;
			tally.restarts += run.report().Restarts;
			tally.takenOver += run.report().Outcome == Outcome::Succeeded && run.report().TakenOverBytes > 0;
			ended = run.report().Outcome == Outcome::Ended;
			disk.part.resize(
				disk.part.size() - static_cast<size_t>(dice.upTo(static_cast<int64>(disk.part.size()) / 4))); // not vouched for
		}
	}
} // namespace

TEST(DownloadMachine, EndsOnceAndNeverWithOtherBytesWhateverHappens)
{
	Tally tally;
	for (unsigned seed = 0; seed < 10'000 && !testing::Test::HasFailure(); ++seed)
	{
		SCOPED_TRACE(seed);
		simulate(seed, tally);
	}
	EXPECT_GT(tally.outcomes[Outcome::Succeeded], 3000);
	for (const Outcome each : {Outcome::NoConnection, Outcome::Stalled, Outcome::Dropped, Outcome::ServerError, Outcome::Changed,
			 Outcome::WrongSize, Outcome::DiskFull, Outcome::Cancelled, Outcome::Ended})
	{
		EXPECT_GT(tally.outcomes[each], 10) << static_cast<int>(each);
	}
	for (const int number : {tally.appended, tally.compared, tally.restarts, tally.takenOver})
	{
		EXPECT_GT(number, 100);
	}
}
