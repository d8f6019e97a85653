#include "Tus/TusMachine.h"
#include "DownloadModel.h"
#include "TextSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

using Outcome = ECorvaneTransferOutcome;
using Do = ECorvaneTusAction;

namespace
{
	/** A server of one upload that does all that servers do, and the journal beside it: both outlive a run. */
	struct UploadServer
	{
		int64 size = 0;
		int64 offset = -1; // -1 = it has no upload
		bool bNoted = false; // the journal tells of one
		// How often, 0 to 1:
		double drops = 0, loses = 0, busy = 0, locked = 0, forgets = 0, damaged = 0, partial = 0, silent = 0, otherPlace = 0, refuses = 0;

		static UploadServer temper(Dice& dice)
		{
			UploadServer server;
			server.size = dice.upTo(20'000);
			for (double* each : {&server.drops, &server.loses, &server.busy, &server.locked, &server.forgets, &server.damaged,
					 &server.partial, &server.silent, &server.otherPlace})
			{
				*each = dice.chance(0.5) ? dice.fraction() * 0.5 : 0;
			}
			server.refuses = dice.chance(0.2) ? 0.02 : 0;
			return server;
		}

		static void set(FCorvaneTusEnd& end, int32 code, int64 told = -1)
		{
			end.Exchange.End = ECorvaneExchangeEnd::Done;
			end.Exchange.bAnswerIsWhole = true;
			end.Exchange.Answer.Code = code;
			if (told >= 0)
			{
				end.Exchange.Answer.Kept.Add(TEXT("Upload-Offset"), FString::Printf(TEXT("%lld"), told));
			}
		}

		FCorvaneTusEnd answer(const FCorvaneTusStep& step, Dice& dice)
		{
			FCorvaneTusEnd end;
			end.Random = dice.fraction();
			end.Exchange.End = dice.chance(0.5) ? ECorvaneExchangeEnd::Dropped : ECorvaneExchangeEnd::Stalled;
			end.Exchange.SentBytes = step.Bytes;
			if (dice.chance(drops)) // and nothing else happens
			{
				return end;
			}
			offset = dice.chance(forgets) ? -1 : offset;
			take(step, dice, end);
			if (dice.chance(loses)) // what it answered
			{
				end.Exchange.bAnswerIsWhole = false;
				end.Exchange.Answer = FCorvaneAnswer();
			}
			return end;
		}

		void take(const FCorvaneTusStep& step, Dice& dice, FCorvaneTusEnd& end)
		{
			const int64 told = dice.chance(silent) ? -1 : 0; // or what it has, as soon as that is known
			if (dice.chance(busy) || dice.chance(locked) || dice.chance(refuses))
			{
				return set(end, dice.chance(0.5) ? 503 : dice.chance(0.8) ? 423 : 413);
			}
			if (step.Action == Do::Create)
			{
				offset = dice.upTo(step.Bytes);
				set(end, 201, step.Bytes > 0 && told == 0 ? offset : -1);
				end.Exchange.Answer.Kept.Add(TEXT("Location"), dice.chance(silent) ? TEXT("") : TEXT("/files/1"));
				return;
			}
			if (offset < 0)
			{
				return set(end, dice.chance(0.5) ? 404 : 410);
			}
			if (step.Action == Do::Ask)
			{
				return set(end, 200, told == 0 ? offset : -1);
			}
			if (step.Start != offset || dice.chance(otherPlace))
			{
				return set(end, 409);
			}
			if (dice.chance(damaged))
			{
				return set(end, 460);
			}
			offset += dice.chance(partial) ? dice.upTo(step.Bytes) : step.Bytes;
			set(end, 204, told == 0 ? offset : -1);
		}
	};

	struct UploadRun
	{
		UploadServer& server;
		Dice& dice;
		const FCorvaneResumableOptions options;
		FCorvaneTusMachine machine{TEXT("http://host/files"), options, FCorvaneTusWishes()};
		double now = 0, disturbs = 0;
		int told = 0, exchanges = 0, takenOver = 0;

		/** Somebody pauses, goes on, cancels, or ends the program. */
		FCorvaneTusStep disturb()
		{
			switch (dice.upTo(5))
			{
			case 0:
				return machine.Cancel(now);
			case 1:
				return machine.EndOfProgram(now);
			case 2:
				return machine.Continue(now);
			default:
				return machine.Pause(now);
			}
		}

		FCorvaneTusStep send(const FCorvaneTusStep& step)
		{
			++exchanges;
			EXPECT_LE(step.Start + step.Bytes, server.size);
			EXPECT_LE(step.Bytes, options.PieceBytes);
			EXPECT_TRUE(step.Action != Do::Send || step.Bytes > 0);
			now += dice.fraction();
			FCorvaneTusEnd end = server.answer(step, dice);
			if (dice.chance(disturbs) && disturb().Action == Do::Stop && dice.chance(0.7))
			{
				end.Exchange.End = ECorvaneExchangeEnd::Cancelled;
				end.Exchange.bAnswerIsWhole = false;
				end.Exchange.Answer = FCorvaneAnswer();
			}
			return machine.OnExchangeEnded(now, end);
		}

		FCorvaneTusStep open()
		{
			FCorvaneTusOpened opened;
			opened.Size = server.size;
			opened.Upload.Address = server.bNoted ? TEXT("http://host/files/1") : TEXT("");
			return machine.OnOpened(now, opened);
		}

		FCorvaneTusStep wait(double seconds)
		{
			EXPECT_LE(seconds, options.LongestWaitSeconds);
			now += seconds;
			const FCorvaneTusStep step = dice.chance(disturbs) ? disturb() : FCorvaneTusStep();
			return step.Action == Do::None ? machine.OnWaitOver(now) : step;
		}

		FCorvaneTusStep follow(const FCorvaneTusStep& step)
		{
			switch (step.Action)
			{
			case Do::Open:
				return open();
			case Do::Begin:
				server.bNoted = true;
				return machine.OnBegun(now, Outcome::Running, FString());
			case Do::Create:
			case Do::Ask:
			case Do::Send:
				return send(step);
			case Do::Wait:
				return wait(step.WaitSeconds);
			case Do::Discard:
				server.bNoted = false;
				return machine.OnClosed(now);
			case Do::Close:
				return machine.OnClosed(now);
			case Do::None:
				EXPECT_TRUE(machine.IsPaused());
				return dice.chance(0.5) ? machine.Continue(now) : disturb();
			default:
				ADD_FAILURE() << "nobody has asked for this";
				return {Do::Tell};
			}
		}

		void run()
		{
			FCorvaneTusStep step = machine.Start(now);
			for (int steps = 0; step.Action != Do::Tell; ++steps)
			{
				ASSERT_LT(steps, 10'000) << "it came to no end";
				step = follow(step);
			}
			EXPECT_EQ(machine.Cancel(now).Action, Do::None) << "it is over";
		}

		void check() const
		{
			const FCorvaneTransferReport& report = machine.GetReport();
			EXPECT_TRUE(machine.IsOver());
			EXPECT_FALSE(report.Sentence.IsEmpty());
			EXPECT_EQ(report.Attempts, exchanges);
			EXPECT_EQ(report.Restarts, report.RestartReasons.Num());
			EXPECT_LE(report.Restarts, 4);
			EXPECT_NEAR(report.SecondsWaited + report.SecondsWorked, now, 1e-6);
			EXPECT_NE(report.Outcome, Outcome::Running);
			if (report.Outcome == Outcome::Succeeded)
			{
				EXPECT_EQ(server.offset, server.size);
				EXPECT_FALSE(server.bNoted);
				EXPECT_EQ(report.BytesLeft, 0);
				EXPECT_EQ(report.TakenOverBytes + report.TransferredBytes - report.RepeatedBytes, server.size);
			}
		}
	};

	FCorvaneResumableOptions habits(Dice& dice)
	{
		FCorvaneResumableOptions options;
		options.PieceBytes = 1024 + dice.upTo(8000);
		options.Attempts = static_cast<int32>(1 + dice.upTo(8));
		options.bFirstPieceAtOnce = dice.chance(0.5);
		return options;
	}
} // namespace

TEST(TusMachine, EndsOnceAndSucceedsOnlyWithTheWholeFileWhateverHappens)
{
	std::map<Outcome, int> outcomes;
	int restarted = 0, tookOver = 0;
	for (unsigned seed = 0; seed < 5000 && !testing::Test::HasFailure(); ++seed)
	{
		SCOPED_TRACE(seed);
		Dice dice(seed);
		UploadServer server = UploadServer::temper(dice);
		const FCorvaneResumableOptions options = habits(dice);
		for (bool ended = true; ended;)
		{
			UploadRun run{server, dice, options};
			run.disturbs = dice.chance(0.5) ? 0.1 : 0;
			run.run();
			run.check();
			const FCorvaneTransferReport& report = run.machine.GetReport();
			++outcomes[report.Outcome];
			restarted += report.Restarts > 0 ? 1 : 0;
			tookOver += report.TakenOverBytes > 0 ? 1 : 0;
			ended = report.Outcome == Outcome::Ended;
		}
	}
	EXPECT_GT(outcomes[Outcome::Succeeded], 1500);
	for (const Outcome each : {Outcome::Dropped, Outcome::Stalled, Outcome::ServerError, Outcome::Cancelled, Outcome::Ended})
	{
		EXPECT_GT(outcomes[each], 50) << static_cast<int>(each);
	}
	EXPECT_GT(restarted, 300);
	EXPECT_GT(tookOver, 20);
}

TEST(TusMachine, FindsTheUploadWhereTheServerSaysThatItIs)
{
	struct Case
	{
		const char* url;
		const char* reached; // by redirects; empty = nobody knows
		const char* location;
		const char* address; // of the upload; empty = nothing is sent to it
	};
	const Case cases[] = {
		{"http://me:pw@host/files?key", "", "/files/1", "http://host/files/1"},
		{"http://host/files/", "", "1", "http://host/files/1"},
		{"http://host/files", "http://other:81/begin", "/1", "http://other:81/1"},
		{"http://host/files", "", "//other/1?sign=x", "http://other/1?sign=x"},
		{"http://host/files", "", "https://other/1", "https://other/1"},
		{"https://host/files", "", "https://you:pw@other/1", "https://other/1"},
		{"https://host/files", "", "http://host/1", ""},
		{"https://host/files", "http://host/files", "/1", ""},
		{"http://host/files", "", "file:///etc/passwd", ""},
		{"http://host/files", "", "http:\\\\other\\1", ""},
	};
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.location);
		FCorvaneTusMachine machine(text(tested.url), FCorvaneResumableOptions(), FCorvaneTusWishes());
		machine.Start(0);
		FCorvaneTusOpened opened;
		opened.Size = 1000;
		EXPECT_EQ(machine.OnOpened(0, opened).Action, Do::Create);
		FCorvaneTusEnd end;
		UploadServer::set(end, 201);
		end.Exchange.ReachedURL = text(tested.reached);
		end.Exchange.Answer.Kept.Add(TEXT("Location"), text(tested.location));
		const bool bFound = *tested.address != 0;
		EXPECT_EQ(machine.OnExchangeEnded(0, end).Action, bFound ? Do::Begin : Do::Close);
		EXPECT_EQ(utf8(machine.GetUpload().Address), tested.address);
		EXPECT_EQ(machine.GetReport().Outcome, bFound ? Outcome::Running : Outcome::ServerError);
	}
}

namespace
{
	struct TusCase
	{
		const char* what;
		/**
		 * "open" begins with a file of 1000 bytes, "noted" with one of which an earlier run has begun an upload;
		 * "start" looks at no file. "204@400+checksum" is an answer with an offset and the extensions of the server, the two others
		 * are ends without one; "unread" and "changed" are of the file.
		 */
		const char* happens;
		const char* does; // "send@400" begins with that byte
		const char* says = ""; // the report
	};

	/** Tells a machine by hand what happens. */
	struct UploadByHand
	{
		static FCorvaneResumableOptions options()
		{
			FCorvaneResumableOptions made;
			made.PieceBytes = 400;
			made.Attempts = 3;
			made.bTerminateOnCancel = true;
			return made;
		}

		FCorvaneTusStep begin(bool isNoted)
		{
			machine.Start(0);
			FCorvaneTusOpened opened;
			opened.Size = 1000;
			opened.Upload.Address = isNoted ? TEXT("http://host/files/0") : TEXT("");
			return machine.OnOpened(0, opened);
		}

		FCorvaneTusStep end(const std::string& word)
		{
			FCorvaneTusEnd ended;
			ended.Random = 0.5;
			ended.Exchange.End = word == "stopped" ? ECorvaneExchangeEnd::Cancelled : ECorvaneExchangeEnd::Dropped;
			ended.bFileChanged = word == "changed";
			ended.FileFailure = ended.bFileChanged || word == "unread" ? Outcome::CannotRead : Outcome::Running;
			if (std::isdigit(word[0]) != 0)
			{
				const size_t offset = word.find('@'), extensions = word.find('+');
				UploadServer::set(ended, std::stoi(word), offset == word.npos ? -1 : std::stoi(word.substr(offset + 1)));
				ended.Exchange.Answer.Kept.Add(TEXT("Location"), TEXT("1"));
				ended.Exchange.Answer.Kept.Add(TEXT("Tus-Extension"), text(extensions == word.npos ? "" : word.substr(extensions + 1)));
			}
			return machine.OnExchangeEnded(0, ended);
		}

		FCorvaneTusStep follow(const std::string& word)
		{
			return word == "open" || word == "noted" ? begin(word == "noted")
				   : word == "start"                 ? machine.Start(0)
				   : word == "begun"                 ? machine.OnBegun(0, Outcome::Running, FString())
				   : word == "waited"                ? machine.OnWaitOver(0)
				   : word == "closed"                ? machine.OnClosed(0)
				   : word == "pause"                 ? machine.Pause(0)
				   : word == "on"                    ? machine.Continue(0)
				   : word == "cancel"                ? machine.Cancel(0)
				   : word == "end"                   ? machine.EndOfProgram(0)
													 : end(word);
		}

		std::string play(const TusCase& each)
		{
			const char* const names[] = {
				"-", "open", "create", "begin", "ask", "send@", "stop", "wait", "terminate", "close", "discard", "tell"};
			std::istringstream words(each.happens);
			std::string word, told;
			while (words >> word)
			{
				const FCorvaneTusStep step = follow(word);
				told += (told.empty() ? "" : " ") + std::string(names[static_cast<int>(step.Action)]);
				told += step.Action == Do::Create && step.Bytes > 0 ? "@" : "";
				told += told.back() == '@' ? std::to_string(step.Start) : "";
			}
			return told;
		}

		FCorvaneTusMachine machine{TEXT("http://host/files/"), options(), FCorvaneTusWishes()};
	};
} // namespace

TEST(TusMachine, DoesWhatFollows)
{
	const TusCase cases[] = {
		{"a whole upload", "open 201 begun 204@400 204@800 204@1000 closed", "create begin send@0 send@400 send@800 discard tell",
			"The server has the file"},
		{"an upload begun anew begins with the first byte", "noted 200@400 204@800 404 201 begun",
			"ask send@400 send@800 create begin send@0"},
		{"one that is begun anew, by a server that takes bytes at once", "open 201+creation-with-upload begun 204@400 404 201@300 begun",
			"create begin send@0 send@400 create@0 begin send@300"},
		{"tries without a new byte are limited", "noted 200@0 broken waited 200@0 broken waited 200@0 broken",
			"ask send@0 wait ask send@0 wait ask send@0 close", "broke off"},
		{"and others are not", "noted 200@0 broken waited 200@1 broken waited 200@2 broken waited 200@3 broken waited",
			"ask send@0 wait ask send@1 wait ask send@2 wait ask send@3 wait ask"},
		{"a server that has gone back takes what it had before", "noted 200@800 broken waited 200@0 204@400 204@800 204@1000",
			"ask send@800 wait ask send@0 send@400 send@800 discard"},
		{"a file that cannot be read may be there later", "noted 200@400 unread", "ask send@400 close"},
		{"one that changes is another one", "noted 200@400 changed", "ask send@400 discard"},
		{"a cancel throws away what was begun", "open 201 begun cancel stopped 204 closed",
			"create begin send@0 stop terminate discard tell", "has thrown it away"},
		{"the same while it is begun", "open 201 cancel begun 404", "create begin - terminate discard", "has thrown it away"},
		{"the server has lost it before", "noted cancel stopped 410", "ask stop terminate discard", "has thrown it away"},
		{"the server does not say that it has", "noted cancel stopped 500", "ask stop terminate close", "did not say"},
		{"nor does it answer", "noted cancel stopped broken", "ask stop terminate close", "did not say"},
		{"a cancel of one that waits in a queue", "cancel start", "- tell", "was cancelled."},
		{"nothing was begun", "open cancel stopped", "create stop close", "The upload was cancelled."},
		{"a server that throws nothing away", "noted 200@400+creation cancel stopped", "ask send@400 stop close", "was cancelled."},
		{"a server that says that it does", "noted 200@400+creation,termination cancel stopped", "ask send@400 stop terminate"},
		{"the program ends", "noted 200@400 end stopped", "ask send@400 stop close", "The program"},
		{"a pause", "noted 200@400 pause stopped on 200@500", "ask send@400 stop - ask send@500"},
		{"a pause while it is begun", "open pause 201 begun on 200@0", "create - begin - ask send@0"},
		{"a pause between two tries", "noted broken pause on 200@0 broken waited", "ask wait - ask send@0 wait ask"},
	};
	for (const TusCase& each : cases)
	{
		UploadByHand hand;
		EXPECT_EQ(hand.play(each), each.does) << each.what;
		EXPECT_EQ(hand.machine.GetReport().TransferredBytes, 0) << "no end has told of any";
		EXPECT_THAT(utf8(hand.machine.GetReport().Sentence), testing::HasSubstr(each.says)) << each.what;
	}
}

TEST(TusOptions, PiecesHave1024BytesAtLeastAndLessThan2GiB)
{
	for (const auto& [bytes, fits] : {std::pair(int64(1023), false), {1024, true}, {(int64(1) << 31) - 1, true}, {int64(1) << 31, false}})
	{
		FCorvaneResumableOptions options;
		options.PieceBytes = bytes;
		EXPECT_EQ(FCorvaneTusWishes::Read(TEXT("http://host/"), TEXT("file"), options).Fault.IsEmpty(), fits) << bytes;
	}
}
