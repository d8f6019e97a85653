#include "Containers/Ticker.h"
#include "CorvaneDownloadFile.h"
#include "CorvaneFollowEvents.h"
#include "CorvaneTransferQueue.h"
#include "CorvaneUploadFile.h"
#include "CorvaneUploadResumable.h"
#include "GameLoop.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Behaviours/Tus.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Origin.h"
#include "Listen.h"
#include "RandomBytes.h"
#include "RawServer.h"
#include "TempDir.h"
#include "TextSupport.h"
#include "UObject/StrongObjectPtr.h"
#include "Waiting.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <sys/resource.h>

using Outcome = ECorvaneTransferOutcome;

namespace
{
	class TransferQueue : public ::testing::Test
	{
	protected:
		/** What nobody holds is gone soon. */
		static FGameLoopSettings collecting()
		{
			FGameLoopSettings settings;
			settings.bCollectAfterEveryTick = true;
			return settings;
		}

		FCorvaneDownloadOptions queued(int priority = 0) const
		{
			FCorvaneDownloadOptions options;
			options.FirstWaitSeconds = 0.001;
			options.LongestWaitSeconds = 0.01;
			options.Queue = text("files");
			options.Priority = priority;
			return options;
		}

		/** Takes note of one transfer's report. */
		std::function<void(const FCorvaneTransferReport&)> expectOne(const std::string& name)
		{
			++expected;
			return [this, name](const FCorvaneTransferReport& report)
			{
				reports[name] = report;
				order.push_back(name);
			};
		}

		UCorvaneDownloadFile* add(const std::string& url, const std::string& name, int priority = 0)
		{
			return UCorvaneDownloadFile::Start(text(url), text(folder.path(name)), queued(priority), expectOne(name));
		}

		void finish()
		{
			EXPECT_TRUE(loop.WaitFor([this] { return order.size() >= expected; }, patienceSeconds));
			loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
			EXPECT_EQ(order.size(), expected); // each start has one outcome
			EXPECT_EQ(reports.size(), expected);
		}

		void waitForBytes(int64 bytes)
		{
			EXPECT_TRUE(loop.WaitFor([&] { return queue->GetReport().Bytes >= bytes; }, patienceSeconds));
		}

		/**
		 * Waits for all that was started, 24 MB, and looks at every second. The limit is held more tightly than that, but a busy
		 * machine moves parts later than they were let go.
		 */
		void expectShared()
		{
			const auto begin = std::chrono::steady_clock::now();
			std::vector<std::pair<double, int64>> seen; // seconds, bytes so far
			EXPECT_TRUE(loop.WaitFor(
				[&]
				{
					const int64 bytes = queue->GetReport().Bytes;
					if (seen.empty() || bytes != seen.back().second)
					{
						seen.emplace_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count(), bytes);
					}
					return order.size() == expected;
				},
				patienceSeconds));
			finish();
			for (size_t first = 0; first < seen.size(); ++first)
			{
				size_t last = first;
				while (last + 1 < seen.size() && seen[last + 1].first < seen[first].first + 1)
				{
					++last;
				}
				EXPECT_LE(static_cast<double>(seen[last].second - seen[first].second), 1.3 * sharedLimit) << seen[first].first;
			}
			EXPECT_LE(seen.back().first, 24.0 / 8 * 3); // on a machine that does other things, too
			EXPECT_GE(seen.back().first, 24.0 / 8 * 0.9);
		}

		static constexpr int64 sharedLimit = 8'000'000;
		const TempDir folder;
		FGameLoop loop{collecting()};
		UCorvaneTransferQueue* queue = UCorvaneTransferQueue::GetTransferQueue(text("Files"));
		size_t expected = 0;
		std::map<std::string, FCorvaneTransferReport> reports;
		std::vector<std::string> order;
	};

	const std::string queuedFile = randomBytes(2'000'000);
	const std::string tag = "ETag: \"one\"\r\n";

	/** The part that a request asks for, or the whole. */
	std::string partFor(const std::string& head)
	{
		const std::string range = headerOf(head, "Range"); // "bytes=N-" or "bytes=N-M"
		if (range.empty())
		{
			return answer(200, queuedFile, tag);
		}
		const size_t first = std::stoul(range.substr(6));
		const std::string until = range.substr(range.find('-') + 1);
		const size_t last = std::min(until.empty() ? queuedFile.size() : std::stoul(until), queuedFile.size() - 1);
		const std::string told =
			"Content-Range: bytes " + std::to_string(first) + "-" + std::to_string(last) + "/" + std::to_string(queuedFile.size()) + "\r\n";
		return answer(206, queuedFile.substr(first, last + 1 - first), told + tag);
	}

	/** Answers with parts of the content, and counts how many it does at the same time. */
	class CountingServer
	{
	public:
		RawServer::Script script()
		{
			return [this](Connection& connection)
			{
				for (;;)
				{
					const std::string head = connection.readHead();
					const Turn turn(*this);
					const std::string all = partFor(head);
					for (size_t at = 0; at < all.size(); at += pieceBytes)
					{
						const std::string piece = all.substr(at, pieceBytes);
						connection.send(piece);
						std::this_thread::sleep_for(std::chrono::microseconds(200)); // so that they overlap
					}
				}
			};
		}

		/** An answer under way; whoever asked may hang up in its middle. */
		struct Turn
		{
			explicit Turn(CountingServer& counting)
				: server(counting)
			{
				const int now = ++server.running;
				server.most = std::max(server.most.load(), now);
			}
			~Turn() { --server.running; }
			CountingServer& server;
		};

		static constexpr size_t pieceBytes = 50'000;
		std::atomic<int> running{0}, most{0};
	};

	/** As long as it lives, this program may open so many more files. */
	class FewFiles
	{
	public:
		explicit FewFiles(int more)
		{
			const int next = ::dup(0);
			::close(next);
			::getrlimit(RLIMIT_NOFILE, &before);
			const rlimit few{static_cast<rlim_t>(next + more), before.rlim_max};
			::setrlimit(RLIMIT_NOFILE, &few);
		}
		~FewFiles() { ::setrlimit(RLIMIT_NOFILE, &before); }
		FewFiles(const FewFiles&) = delete;
		FewFiles& operator=(const FewFiles&) = delete;

	private:
		rlimit before{};
	};
} // namespace

TEST_F(TransferQueue, KeepsItsLimitsAndEndsEachOnce)
{
	CountingServer one, other;
	const RawServer server(one.script()), second(other.script());
	queue->SetLimits(1, 1);
	int ends = 0, idle = 0;
	Listen(queue->OnTransferEnd, [&](UCorvaneTransfer*, const FCorvaneTransferReport&) { ++ends; });
	Listen(queue->OnIdle, [&](const FCorvaneQueueReport&) { ++idle; });
	for (int file = 0; file < 12; ++file)
	{
		add((file < 8 ? server : second).url(), "f" + std::to_string(file));
	}
	add("ftp://wrong", "wrong", 9);
	UCorvaneDownloadFile* const cancelled = add(server.url(), "cancelled");
	const TStrongObjectPtr<UCorvaneDownloadFile> held(cancelled);
	EXPECT_EQ(queue->GetReport().Waiting, 13);
	queue->SetLimits(3, 2);
	EXPECT_EQ(queue->GetReport().Waiting, 11);
	EXPECT_EQ(queue->GetReport().Running, 3);
	cancelled->Cancel();
	EXPECT_TRUE(order.empty()); // nothing is told inside these calls
	finish();
	EXPECT_LE(one.most, 2);
	EXPECT_LE(other.most, 2);
	EXPECT_EQ(reports["wrong"].Outcome, Outcome::Refused);
	EXPECT_EQ(reports["cancelled"].Outcome, Outcome::Cancelled);
	EXPECT_EQ(reports["cancelled"].Attempts, 0);
	EXPECT_EQ(ends, 14);
	EXPECT_EQ(idle, 1);
	const FCorvaneQueueReport report = queue->GetReport();
	EXPECT_EQ(report.Done, 12);
	EXPECT_EQ(report.Failed, 2);
	EXPECT_EQ(report.Bytes, 12 * 2'000'000);
	EXPECT_EQ(report.TotalBytes, report.Bytes);
	EXPECT_EQ(report.Waiting + report.Running + report.Paused, 0);
	EXPECT_TRUE(folder.read("f11") == queuedFile);
	held->Pause(); // what is over stays over
	held->Continue();
	held->Cancel();
	queue->CancelAll();
	finish();
}

TEST_F(TransferQueue, StartsByPriorityThenHostInTurnThenArrival)
{
	CountingServer one, other;
	const RawServer server(one.script()), second(other.script());
	queue->SetLimits(1, 1);
	queue->Pause();
	for (const char* name : {"a1", "a2", "a3"})
	{
		add(server.url(), name);
	}
	add(second.url(), "b1");
	add(server.url(), "urgent", 1);
	queue->Continue();
	finish();
	EXPECT_EQ(order, (std::vector<std::string>{"urgent", "b1", "a1", "a2", "a3"}));
}

TEST_F(TransferQueue, TellsWhatHasComeOfAFileWithoutALength)
{
	const RawServer server(
		[](Connection& connection)
		{
			connection.readHead();
			connection.send("HTTP/1.1 200 OK\r\n\r\nhello");
			connection.waitForPeer();
		});
	add(server.url(), "endless");
	waitForBytes(5);
	EXPECT_EQ(queue->GetReport().TotalBytes, -1);
	queue->CancelAll();
	finish();
}

TEST_F(TransferQueue, PausesWithoutMovingAByteTwice)
{
	CountingServer counting;
	const RawServer server(counting.script());
	queue->SetLimits(2, 2, 4'000'000);
	for (const char* name : {"a", "b", "c", "d"})
	{
		add(server.url(), name);
	}
	UCorvaneDownloadFile* const held = add(server.url(), "held");
	held->Pause();
	EXPECT_TRUE(held->IsPaused());
	for (const int64 bytes : {500'000, 1'500'000})
	{
		waitForBytes(bytes);
		queue->Pause();
		const auto stands = [&]
		{
			const int64 before = queue->GetReport().Bytes;
			loop.RunUntilIdle([] { return false; });
			return counting.running == 0 && queue->GetReport().Bytes == before;
		};
		EXPECT_TRUE(loop.WaitFor(stands, patienceSeconds));
		queue->Continue();
	}
	EXPECT_TRUE(loop.WaitFor([this] { return order.size() == 4; }, patienceSeconds));
	EXPECT_EQ(queue->GetReport().Paused, 1);
	held->Continue();
	finish();
	for (const auto& [name, report] : reports)
	{
		EXPECT_EQ(report.Outcome, Outcome::Succeeded) << name;
		EXPECT_EQ(report.TransferredBytes, 2'000'000) << name;
		EXPECT_TRUE(folder.read(name) == queuedFile) << name;
	}
}

TEST_F(TransferQueue, GivesThePlaceOfAPausedOneAwayWhenItStandsStill)
{
	CountingServer counting;
	std::atomic<bool> answers{false};
	const RawServer server(
		[&](Connection& connection)
		{
			connection.readBody(connection.readHead());
			const CountingServer::Turn turn(counting);
			answers.wait(false);
			connection.send(answer(200, "well"));
		});
	folder.write("source", "bytes");
	queue->SetLimits(1, 1);
	FCorvaneUploadOptions options;
	options.Queue = text("files");
	UCorvaneUploadFile* uploads[3];
	for (UCorvaneUploadFile*& each : uploads)
	{
		each = UCorvaneUploadFile::Start(
			text(server.url()), text(folder.path("source")), options, expectOne("upload" + std::to_string(expected)));
	}
	EXPECT_TRUE(loop.WaitFor([&] { return counting.running == 1; }, patienceSeconds));
	for (const bool goesOn : {true, false})
	{
		uploads[0]->Pause(); // which lets its request end
		EXPECT_EQ(queue->GetReport().Running, 1);
		EXPECT_EQ(queue->GetReport().Waiting, 2);
		goesOn ? uploads[0]->Continue() : void();
	}
	answers = true;
	answers.notify_all();
	finish();
	EXPECT_EQ(counting.most, 1);

	CountingServer files;
	const RawServer other(files.script());
	queue->SetLimits(1, 1, 4'000'000);
	UCorvaneDownloadFile* const held = add(other.url(), "held");
	add(other.url(), "next");
	EXPECT_TRUE(loop.WaitFor([&] { return held->GetReport().TransferredBytes > 0; }, patienceSeconds));
	held->Pause();
	EXPECT_TRUE(loop.WaitFor([this] { return order.size() == 4; }, patienceSeconds));
	EXPECT_EQ(order.back(), "next");
	EXPECT_TRUE(held->IsPaused());
	held->Continue();
	finish();
	EXPECT_EQ(files.most, 1);
	for (const auto& [name, report] : reports)
	{
		EXPECT_EQ(report.Outcome, Outcome::Succeeded) << name;
	}
}

TEST_F(TransferQueue, OpensNothingForThoseThatAreEndedWhileTheyWait)
{
	queue->Pause();
	for (const Outcome wanted : {Outcome::Cancelled, Outcome::Ended})
	{
		for (int file = 0; file < 300; ++file)
		{
			add("http://host/", std::to_string(expected));
		}
		const FewFiles few(50);
		wanted == Outcome::Ended ? loop.Shutdown() : queue->CancelAll();
		EXPECT_TRUE(loop.WaitFor([this] { return order.size() >= expected; }, patienceSeconds));
		EXPECT_EQ(std::count_if(reports.begin(), reports.end(), [=](const auto& each) { return each.second.Outcome == wanted; }), 300);
	}
	EXPECT_EQ(order.size(), expected);
	EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(TransferQueue, TellsOfWhatIsStartedAtTheEndOfTheProgram)
{
	const LoopbackListener silent;
	const FString url = text("http://" + silent.authority() + "/");
	size_t started = 0, told = 0, most = 12;
	std::function<void(const std::string&)> start = [&](const std::string& name)
	{
		FCorvaneDownloadOptions options = queued();
		options.Queue = text(name);
		UCorvaneDownloadFile::Start(url, text(folder.path(std::to_string(++started))), options,
			[&, name](const FCorvaneTransferReport& report)
			{
				++told;
				EXPECT_EQ(report.Outcome, Outcome::Ended);
				started < most ? start(name.empty() ? name : name + "later") : void(); // in a queue that nobody knew of
			});
	};
	start("");
	start("files");
	UCorvaneFollowEvents::FHandlers handlers;
	handlers.OnClose = [&](const FCorvaneTransferReport&)
	{
		++told;
		handlers.OnClose = [&](const FCorvaneTransferReport&) { ++told; };
		UCorvaneFollowEvents::Start(url, FCorvaneFollowOptions(), handlers);
		++started;
	};
	UCorvaneFollowEvents::Start(url, FCorvaneFollowOptions(), handlers);
	++started;
	EXPECT_TRUE(loop.WaitFor([&] { return folder.exists("1.corvpart"); }, patienceSeconds));
	loop.Shutdown();
	EXPECT_GE(started, most);
	EXPECT_EQ(told, started);

	FGameLoop again;
	most = SIZE_MAX;
	start("");
	again.Shutdown();
	EXPECT_LT(started, 40u) << "it goes on until the time is over";
}

TEST_F(TransferQueue, SharesBytesPerSecond)
{
	CountingServer counting;
	const RawServer server(counting.script());
	queue->SetLimits(4, 4, sharedLimit);
	bool isLater = false; // a queue that was idle for a while watches anew
	FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda([&isLater](float) { return !(isLater = true); }), 0.2f);
	EXPECT_TRUE(loop.WaitFor([&isLater] { return isLater; }, patienceSeconds));
	int64 told = 0;
	Listen(queue->OnProgress, [&](const FCorvaneQueueReport& report) { told = report.Bytes; });
	for (int file = 0; file < 12; ++file)
	{
		add(server.url(), std::to_string(file));
	}
	expectShared();
	EXPECT_GT(told, 12'000'000);
}

TEST_F(TransferQueue, ALimitHoldsForWhatRunsToo)
{
	Lab::Origin origin;
	origin.at("/", Lab::file(queuedFile), Lab::onlyFirst(2, Lab::stall({.at = {.share = 0.5}})));
	UCorvaneDownloadFile* const begun = add(origin.url(), "begun");
	waitForBytes(1'000'000);
	begun->Pause();
	ASSERT_TRUE(loop.WaitFor([&] { return begun->IsPaused() && queue->GetReport().Running == 0; }, patienceSeconds));
	begun->Continue();
	waitForBytes(1'500'000); // and the rest of it is stuck
	queue->SetLimits(8, 6, sharedLimit);
	finish();
	EXPECT_EQ(reports["begun"].Outcome, Outcome::Succeeded);
	EXPECT_EQ(reports["begun"].TransferredBytes, 2'000'000);
	const std::string rest(origin.log().at(2).request->header("Range"));
	EXPECT_TRUE(rest.starts_with("bytes=1500000-") && rest.back() != '-') << rest;
}

TEST_F(TransferQueue, SharesBytesPerSecondAmongUploads)
{
	Lab::Origin origin;
	origin.at("/file", Lab::upload({}));
	origin.at("/files*", Lab::tus({}));
	folder.write("source", queuedFile);
	queue->SetLimits(4, 4, sharedLimit);
	for (const bool inPieces : {true, false})
	{
		for (int file = 0; file < 12; ++file)
		{
			const std::string name = (inPieces ? "pieces" : "whole") + std::to_string(file);
			const auto startedIn = [&](auto options)
			{
				options.Queue = text("files");
				return options;
			};
			FCorvaneResumableOptions resumable;
			resumable.JournalFolder = text(folder.path(name)); // or they would be one upload
			inPieces ? void(UCorvaneUploadResumable::Start(
						   text(origin.url("/files")), text(folder.path("source")), startedIn(resumable), expectOne(name)))
					 : void(UCorvaneUploadFile::Start(
						   text(origin.url("/file")), text(folder.path("source")), startedIn(FCorvaneUploadOptions()), expectOne(name)));
		}
		expectShared();
	}
	for (const auto& [name, report] : reports)
	{
		EXPECT_EQ(report.Outcome, Outcome::Succeeded) << name;
	}
}

TEST_F(TransferQueue, TakesUpAFolderAfterARestart)
{
	CountingServer counting;
	const RawServer server(counting.script());
	queue->SetLimits(2, 8, 8'000'000);
	for (const char* name : {"a", "b", "c"})
	{
		add(server.url(std::string("/") + name), name);
	}
	waitForBytes(2'000'000);
	loop.Shutdown(); // all that run or wait are ended once
	EXPECT_EQ(order.size(), 3u);
	int64 kept = 0;
	for (const auto& [name, report] : reports)
	{
		EXPECT_EQ(report.Outcome, Outcome::Ended);
		EXPECT_EQ(report.Attempts == 0, name == "c"); // its turn has not come
		kept += report.BytesLeft;
	}
	EXPECT_GE(kept, 2'000'000);
	folder.write("torn.corvjournal", "source 1");
	folder.write("a.corvjournal.copy", folder.read("a.corvjournal"));

	FGameLoop again;
	queue = UCorvaneTransferQueue::GetTransferQueue(text("files"));
	queue->Pause();
	add(server.url("/a"), "a")->Cancel(); // also of one that has not begun its report tells what is on disk
	const int64 left = reports["a"].BytesLeft;
	EXPECT_TRUE(again.WaitFor([this] { return order.size() == expected; }, patienceSeconds));
	EXPECT_EQ(reports["a"].Outcome, Outcome::Cancelled);
	EXPECT_EQ(reports["a"].Attempts, 0);
	EXPECT_EQ(reports["a"].BytesLeft, left);
	queue->Continue();
	int64 takenOver = 0;
	int idle = 0;
	std::vector<Outcome> outcomes;
	Listen(queue->OnTransferEnd,
		[&](UCorvaneTransfer*, const FCorvaneTransferReport& report)
		{
			outcomes.push_back(report.Outcome);
			takenOver += report.TakenOverBytes;
		});
	Listen(queue->OnIdle, [&](const FCorvaneQueueReport&) { ++idle; });
	queue->ResumeFolder(text(folder.path()), queued(), text("http://elsewhere"));
	EXPECT_TRUE(again.WaitFor([&] { return idle == 1; }, patienceSeconds));
	EXPECT_TRUE(outcomes.empty());
	queue->ResumeFolder(text(folder.path()), queued(), text(server.url("/"))); // the slash says nothing
	EXPECT_TRUE(again.WaitFor([&] { return idle == 2; }, patienceSeconds));
	EXPECT_EQ(outcomes, std::vector<Outcome>(2, Outcome::Succeeded));
	EXPECT_EQ(takenOver, kept);
	EXPECT_TRUE(folder.read("a") == queuedFile && folder.read("b") == queuedFile);
}
