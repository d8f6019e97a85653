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
		int appended = 0, compared = 0, restarts = 0, takenOver = 0, lost = 0;
	};

	void check(const ModelRun& run, const ModelServer& server, const ModelDisk& disk, const FCorvaneDownloadOptions& options)
	{
		const FCorvaneTransferReport& report = run.report();
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
			run.losses = dice.chance(0.2) ? 0.3 : 0;
			ASSERT_TRUE(run.run()) << "it came to no end";
			check(run, server, disk, options);
			++tally.outcomes[run.report().Outcome];
			tally.appended += run.appended;
			tally.compared += run.compared;
			tally.lost += run.lost;
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
	for (unsigned seed = 0; seed < 12'000 && !testing::Test::HasFailure(); ++seed)
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
	for (const int number : {tally.appended, tally.compared, tally.restarts, tally.takenOver, tally.lost})
	{
		EXPECT_GT(number, 100);
	}
}

namespace
{
	/** A machine, told by hand what happens. */
	struct ByHand
	{
		explicit ByHand(const FCorvaneDownloadOptions& options = {})
			: machine(TEXT("http://h/f"), TEXT("f"), options)
		{
		}

		/** To the first question, with so much on disk of a file with a tag. */
		FCorvaneDownloadStep begin(int64 onDisk, int64 total, const char* tag = "\"a\"")
		{
			machine.Start(0, FString());
			machine.OnLooked(0, false, FDateTime());
			FCorvaneDownloadOpened opened;
			opened.Length = length = onDisk;
			opened.Total = total;
			opened.Version.ETag = text(tag);
			return machine.OnOpened(0, opened);
		}

		/** An exchange that ends with this code, or without an answer. */
		FCorvaneDownloadStep end(double now, int code, const char* retryAfter = "", ECorvaneExchangeEnd how = ECorvaneExchangeEnd::Done)
		{
			FCorvaneAttemptEnd ended;
			ended.Exchange.End = how;
			ended.Exchange.Answer.Code = code;
			ended.Exchange.Answer.RetryAfter = text(retryAfter);
			ended.Exchange.bAnswerIsWhole = code != 0;
			ended.Length = length;
			ended.Random = 0.5;
			return machine.OnAttemptEnded(now, ended);
		}

		FCorvaneDownloadMachine machine;
		int64 length = 0;
	};

	using Action = ECorvaneDownloadAction;
} // namespace

TEST(DownloadMachine, WaitsAsTheServerWishesButNoLongerThanTheCallerDoes)
{
	FCorvaneDownloadOptions options;
	options.FirstWaitSeconds = 4;
	options.LongestWaitSeconds = 3600;
	options.Attempts = 4;
	ByHand hand(options);
	const FCorvaneDownloadQuestion first = hand.begin(10, 100).Question;
	EXPECT_EQ(first.OnDisk, 10);
	EXPECT_EQ(first.Total, 100) << "or an answer of another file would pass";
	EXPECT_DOUBLE_EQ(hand.end(1, 503, "3599").WaitSeconds, 3600); // and 2 of its own, up to the longest
	EXPECT_EQ(hand.machine.OnWaitOver(3601).Action, Action::Ask);
	EXPECT_DOUBLE_EQ(hand.end(3602, 0, "", ECorvaneExchangeEnd::NoConnection).WaitSeconds, 4); // half of 4 * 2
	hand.machine.OnWaitOver(3606);
	EXPECT_EQ(hand.end(3607, 429, "3601").Action, Action::Close) << "longer than the longest wait";
	EXPECT_EQ(hand.machine.OnClosed(3607, 10).Action, Action::Tell);
	const FCorvaneTransferReport& report = hand.machine.GetReport();
	EXPECT_EQ(report.Outcome, Outcome::ServerError);
	EXPECT_NE(utf8(report.Sentence).find("3601 seconds"), std::string::npos);
	EXPECT_EQ(report.Code, 429);
	EXPECT_EQ(report.BytesLeft, 10);
	EXPECT_EQ(report.Attempts, 3);
	EXPECT_DOUBLE_EQ(report.SecondsWaited, 3604);
	EXPECT_DOUBLE_EQ(report.SecondsWorked, 3);
}

TEST(DownloadMachine, GivesUpAfterSoManyTriesWithoutANewByteOnly)
{
	FCorvaneDownloadOptions options;
	options.Attempts = 3;
	ByHand hand(options);
	hand.begin(0, -1);
	for (int now = 1; now < 1000; ++now)
	{
		FCorvaneAttemptEnd ended; // another byte, or the second failure in a row
		ended.Exchange.End = ECorvaneExchangeEnd::Stalled;
		ended.Exchange.Answer.Code = now == 1 ? 200 : 206;
		ended.Exchange.Answer.Version.ETag = TEXT("\"a\"");
		ended.Exchange.bAnswerIsWhole = now == 1 || now % 3 == 0;
		ended.bStartedOver = now == 1;
		ended.Exchange.Answer.Range = CorvaneAnswer::ParseRange(FString::Printf(TEXT("bytes %lld-999/1000"), hand.length));
		hand.length += ended.Exchange.bAnswerIsWhole ? 1 : 0;
		ended.Length = hand.length;
		ASSERT_EQ(hand.machine.OnAttemptEnded(now, ended).Action, Action::Ask) << now; // the dice say 0 seconds
	}
	for (const Action expected : {Action::Wait, Action::Wait, Action::Close})
	{
		EXPECT_EQ(hand.end(1000, 0, "", ECorvaneExchangeEnd::Dropped).Action, expected);
		hand.machine.OnWaitOver(1000);
	}
}

TEST(DownloadMachine, StartsOverThreeTimesWhenWhatCameIsOfNoUse)
{
	for (const auto& [tooLong, tailDiffers, outcome] : {std::tuple(true, false, Outcome::WrongSize), {false, true, Outcome::Changed}})
	{
		ByHand hand;
		EXPECT_EQ(hand.begin(10, 100).Question.bRange, true);
		FCorvaneAttemptEnd ended;
		ended.Exchange.End = ECorvaneExchangeEnd::StoppedByUs;
		ended.Exchange.Answer.Code = 200;
		ended.Exchange.bAnswerIsWhole = true;
		ended.bTooLong = tooLong;
		ended.bTailDiffers = tailDiffers;
		ended.Length = 10;
		for (int restarts = 1; restarts <= 3; ++restarts)
		{
			const FCorvaneDownloadStep step = hand.machine.OnAttemptEnded(restarts, ended);
			EXPECT_EQ(step.Action, Action::Ask);
			EXPECT_EQ(step.Question.OnDisk, 0);
			EXPECT_FALSE(step.Question.bRange);
			EXPECT_EQ(hand.machine.GetReport().Restarts, restarts);
		}
		EXPECT_EQ(hand.machine.OnAttemptEnded(4, ended).Action, Action::Close);
		EXPECT_EQ(hand.machine.GetReport().Outcome, outcome);
	}
}

TEST(DownloadMachine, PausesAtAServerWithoutRangesAreNotItsFault)
{
	ByHand hand;
	hand.begin(10, 100);
	FCorvaneAttemptEnd ended;
	ended.Exchange.Answer.Code = 200;
	ended.Exchange.Answer.ContentLength = 100;
	ended.Exchange.bAnswerIsWhole = ended.bStartedOver = true;
	ended.Length = 10;
	for (int pauses = 0; pauses < 5; ++pauses)
	{
		hand.machine.Pause(0);
		ended.Exchange.End = ECorvaneExchangeEnd::Cancelled;
		EXPECT_EQ(hand.machine.OnAttemptEnded(0, ended).Action, Action::Hold);
		hand.machine.Continue(0);
	}
	ended.Exchange.End = ECorvaneExchangeEnd::Dropped;
	for (const Action next : {Action::Ask, Action::Ask, Action::Ask, Action::Close}) // it began with a restart that was
	{
		EXPECT_EQ(hand.machine.OnAttemptEnded(0, ended).Action, next);
	}
}

TEST(DownloadMachine, AsksInPartsThatAreMoreThanWhatIsComparedBeforeThem)
{
	constexpr int64 total = 1'100'000;
	for (const char* tag : {"\"a\"", "W/\"a\""})
	{
		FCorvaneDownloadOptions options;
		options.BytesPerSecond = 200'000;
		ByHand hand(options);
		hand.machine.LimitParts(10'000); // of its queue
		FCorvaneDownloadStep step = hand.begin(100'000, total, tag);
		int64 moved = 0;
		double waited = 0;
		while (step.Action == Action::Ask)
		{
			FCorvaneAttemptEnd ended;
			ended.Exchange.End = ECorvaneExchangeEnd::Done;
			ended.Exchange.Answer.Code = 206;
			ended.Exchange.Answer.Range = {true, step.Question.From(), std::min(step.Question.Until, total) - 1, total};
			ended.Exchange.bAnswerIsWhole = ended.bTailPassed = true;
			ended.Length = std::min(step.Question.Until, total);
			ended.Exchange.BodyBytes = ended.Length - step.Question.From();
			EXPECT_GE(step.Question.MostBytes(), ended.Exchange.BodyBytes);
			moved += ended.Exchange.BodyBytes;
			step = hand.machine.OnAttemptEnded(0, ended);
			waited += step.WaitSeconds;
			if (step.Action != Action::Finish)
			{
				EXPECT_NEAR(waited, static_cast<double>(moved) / 200'000, 1e-6) << "compared bytes move, too";
				step = hand.machine.OnWaitOver(0);
			}
		}
		EXPECT_EQ(step.Action, Action::Finish) << tag;
		EXPECT_LE(moved, 1'300'000) << tag;
	}
}

TEST(DownloadMachine, LeavesTheTargetAloneWhereItShall)
{
	using If = ECorvaneIfTargetExists;
	for (const auto& [rule, first, outcome] :
		{std::tuple(If::Keep, Action::Tell, Outcome::Succeeded), {If::Fail, Action::LookForRest, Outcome::Refused},
			{If::OnlyIfNewer, Action::Open, Outcome::Running}, {If::Replace, Action::Open, Outcome::Running}})
	{
		FCorvaneDownloadOptions options;
		options.IfTargetExists = rule;
		ByHand hand(options);
		const Action began = hand.machine.Start(0, FString()).Action; // what is replaced anyway is not looked at
		EXPECT_EQ(began == Action::Look ? hand.machine.OnLooked(0, true, FDateTime(700000000000000000)).Action : began, first);
		EXPECT_EQ(hand.machine.GetReport().Outcome, outcome);
		const FCorvaneDownloadStep asked = hand.machine.OnOpened(0, {});
		EXPECT_EQ(asked.Question.IfNewerThan.GetTicks() > 0, rule == If::OnlyIfNewer);
		if (rule == If::OnlyIfNewer)
		{
			EXPECT_EQ(hand.end(1, 304).Action, Action::Look);
			EXPECT_EQ(hand.machine.OnLooked(1, true, FDateTime()).Action, Action::Close) << "there may be bytes of another address";
			EXPECT_EQ(hand.machine.OnClosed(1, 0).Action, Action::Tell);
			EXPECT_TRUE(hand.machine.GetReport().bTargetKept);
		}
	}
	FCorvaneDownloadOptions newer;
	newer.IfTargetExists = If::OnlyIfNewer;
	ByHand begun(newer); // what is on disk is of no use, and the target is new enough
	begun.machine.Start(0, FString());
	begun.machine.OnLooked(0, true, FDateTime(700000000000000000));
	EXPECT_GT(begun.begin(10, 100).Question.IfNewerThan.GetTicks(), 0);
	EXPECT_EQ(begun.end(1, 412).Question.OnDisk, 0);
	EXPECT_EQ(begun.end(2, 304).Action, Action::Look);
	EXPECT_EQ(begun.machine.OnLooked(2, true, FDateTime()).Action, Action::Discard);
	for (const int code : {206, 304}) // a newer one's bytes have come, or the target has gone meanwhile
	{
		ByHand hand(newer);
		hand.machine.Start(0, FString());
		hand.machine.OnLooked(0, true, FDateTime(700000000000000000));
		hand.begin(10, 100);
		FCorvaneAttemptEnd ended;
		ended.Exchange.End = ECorvaneExchangeEnd::Done;
		ended.Exchange.Answer.Code = code;
		ended.Exchange.Answer.Range = {true, 10, 99, 100};
		ended.Exchange.bAnswerIsWhole = true;
		ended.Length = 11;
		FCorvaneDownloadStep step = hand.machine.OnAttemptEnded(1, ended);
		step = step.Action == Action::Look ? hand.machine.OnLooked(1, false, FDateTime()) : step;
		EXPECT_EQ(step.Action, Action::Ask);
		EXPECT_EQ(step.Question.OnDisk, 11);
		EXPECT_EQ(step.Question.IfNewerThan.GetTicks(), 0) << code;
	}
	ByHand refused;
	EXPECT_EQ(refused.machine.Start(0, TEXT("No.")).Action, Action::Tell);
	EXPECT_EQ(refused.machine.GetReport().Outcome, Outcome::Refused);
}

TEST(DownloadMachine, ObeysInEveryState)
{
	// Each state by the calls that lead there, and what Pause and then Cancel do in it.
	struct Case
	{
		const char* state;
		std::function<void(ByHand&)> go;
		Action pause, cancel;
	};
	const auto opening = [](ByHand& hand) { hand.machine.Start(0, FString()); };
	const auto asking = [](ByHand& hand) { hand.begin(10, 100); };
	const auto waiting = [](ByHand& hand)
	{
		hand.begin(10, 100);
		hand.end(1, 503);
	};
	const auto finishing = [](ByHand& hand)
	{
		hand.begin(100, 100);
		FCorvaneAttemptEnd ended;
		ended.Exchange.End = ECorvaneExchangeEnd::Done;
		ended.Exchange.Answer.Code = 416;
		ended.Exchange.Answer.Range.Total = ended.Length = 100;
		ended.Exchange.bAnswerIsWhole = true;
		EXPECT_EQ(hand.machine.OnAttemptEnded(1, ended).Action, Action::Finish);
	};
	for (const Case& each : {Case{"new", [](ByHand&) {}, Action::None, Action::None}, {"opening", opening, Action::Stop, Action::Stop},
			 {"asking", asking, Action::Stop, Action::Stop}, {"waiting", waiting, Action::Hold, Action::Close},
			 {"finishing", finishing, Action::None, Action::StopFinishing}})
	{
		SCOPED_TRACE(each.state);
		ByHand hand;
		each.go(hand);
		EXPECT_EQ(hand.machine.Pause(2).Action, each.pause);
		EXPECT_EQ(hand.machine.Cancel(3).Action, each.cancel);
	}
	for (const bool asked : {false, true}) // a new part file's first try may have begun before its stop
	{
		ByHand hand;
		EXPECT_TRUE(hand.machine.Start(0, FString()).bAskIfNew);
		EXPECT_EQ(hand.machine.Cancel(1).Action, Action::Stop);
		const auto cancelled = asked ? hand.end(2, 0, "", ECorvaneExchangeEnd::Cancelled) : hand.machine.OnOpened(2, {});
		EXPECT_EQ(cancelled.Action, Action::Close);
		EXPECT_EQ(hand.machine.GetReport().Attempts, asked ? 1 : 0);
	}
	for (const bool resumes : {false, true}) // a queue ends so what waits: nothing is opened, or thousands would be
	{
		FCorvaneDownloadOptions options;
		options.bResume = resumes;
		ByHand early(options);
		early.machine.Cancel(0);
		EXPECT_EQ(early.machine.Start(0, FString()).Action, resumes ? Action::LookForRest : Action::Tell);
		EXPECT_EQ(early.machine.OnRestFound(1, 10, 100).Action, resumes ? Action::Tell : Action::None);
		EXPECT_EQ(early.machine.GetReport().BytesLeft, resumes ? 10 : 0);
	}
	for (const bool cancels : {false, true}) // what ends before the part file is opened, or because it cannot be, tells of its bytes
	{
		FCorvaneDownloadOptions options;
		options.IfTargetExists = ECorvaneIfTargetExists::Fail;
		ByHand looking(options);
		looking.machine.Start(0, FString());
		if (cancels)
		{
			looking.machine.Cancel(0);
		}
		EXPECT_EQ(looking.machine.OnLooked(1, true, FDateTime()).Action, Action::LookForRest);
		EXPECT_EQ(looking.machine.OnRestFound(1, 10, 100).Action, Action::Tell);
		EXPECT_EQ(looking.machine.GetReport().Outcome, cancels ? Outcome::Cancelled : Outcome::Refused);
		ByHand full;
		full.machine.Start(0, FString());
		FCorvaneDownloadOpened opened;
		opened.Failure = Outcome::DiskFull;
		opened.Length = 10;
		EXPECT_EQ(full.machine.OnOpened(1, opened).Action, Action::Tell);
		for (const ByHand& each : {looking, full})
		{
			EXPECT_EQ(each.machine.GetReport().BytesLeft, 10);
		}
	}
	for (const Outcome late : {Outcome::Cancelled, Outcome::Succeeded}) // the whole file was being read, or was in its place already
	{
		ByHand cancelled;
		finishing(cancelled);
		cancelled.machine.Cancel(2);
		FCorvaneDownloadFinished finished;
		finished.Outcome = late;
		EXPECT_EQ(cancelled.machine.OnFinished(3, finished).Action, Action::Tell);
		EXPECT_EQ(cancelled.machine.GetReport().Outcome, late);
	}
	FCorvaneDownloadOptions onlyOnce;
	onlyOnce.Attempts = 1;
	ByHand paused(onlyOnce); // a pause is no failed try, also when it is over before the exchange has ended
	asking(paused);
	EXPECT_EQ(paused.machine.Pause(0).Action, Action::Stop);
	EXPECT_EQ(paused.machine.Continue(0).Action, Action::None);
	EXPECT_EQ(paused.end(0, 0, "", ECorvaneExchangeEnd::Cancelled).Action, Action::Ask);
	EXPECT_EQ(paused.machine.Pause(1).Action, Action::Stop);
	EXPECT_EQ(paused.end(1, 0, "", ECorvaneExchangeEnd::Cancelled).Action, Action::Hold);
	EXPECT_EQ(paused.machine.Continue(9000).Question.OnDisk, 10);
	EXPECT_EQ(paused.machine.EndOfProgram(9001).Action, Action::Stop);
	EXPECT_EQ(paused.end(9001, 0, "", ECorvaneExchangeEnd::Cancelled).Action, Action::Close);
	EXPECT_EQ(paused.machine.OnClosed(9001, 10).Action, Action::Tell);
	EXPECT_EQ(paused.machine.GetReport().Outcome, Outcome::Ended);
	EXPECT_DOUBLE_EQ(paused.machine.GetReport().SecondsWorked, 2) << "a pause is no work";
	ByHand limited; // in its middle
	EXPECT_EQ(limited.begin(10, 100).Question.Until, -1);
	EXPECT_EQ(limited.machine.AskInParts().Action, Action::None) << "without a limit";
	limited.machine.LimitParts(20);
	EXPECT_EQ(limited.machine.AskInParts().Action, Action::Stop);
	EXPECT_EQ(limited.end(1, 0, "", ECorvaneExchangeEnd::Cancelled).Question.Until, 30);
	EXPECT_EQ(limited.machine.AskInParts().Action, Action::None) << "it does";
	ByHand lost; // all that was on disk; what was told of the file holds
	lost.begin(10, 100);
	lost.length = 0;
	EXPECT_EQ(lost.end(1, 0, "", ECorvaneExchangeEnd::Cancelled).Question.Total, 100);
	ByHand whole;
	finishing(whole);
	FCorvaneDownloadFinished wrong;
	wrong.Outcome = Outcome::WrongHash;
	EXPECT_EQ(whole.machine.OnFinished(2, wrong).Action, Action::Tell);
	EXPECT_EQ(whole.machine.GetReport().BytesLeft, 0);
}
