#include "CorvaneDownloadFile.h"
#include "GameLoop.h"
#include "LoopbackListener.h"
#include "RandomBytes.h"
#include "RawServer.h"
#include "TempDir.h"
#include "TextSupport.h"
#include "UObject/UObjectGlobals.h"
#include "Waiting.h"

#include <charconv>
#include <gtest/gtest.h>

namespace
{
	/** What a server has under an address. */
	struct Version
	{
		std::string bytes;
		std::string headers; // validators, lines with their line ends
	};

	enum class Ranges
	{
		Honest,
		/** Sends the part without looking at If-Range. */
		WithoutIfRange,
		Ignored,
		/** Sends another part than the one that was asked for, and says so, or does not. */
		Shifted,
		ShiftedInSecret,
		ErrorPage
	};

	std::int64_t firstByteOf(const std::string& head)
	{
		const std::string range = headerOf(head, "Range"); // "bytes=N-"
		std::int64_t first = 0;
		std::from_chars(range.data() + std::min<size_t>(range.size(), 6), range.data() + range.size(), first);
		return first;
	}

	std::string partOf(const Version& version, std::int64_t first, std::int64_t told)
	{
		const auto size = static_cast<std::int64_t>(version.bytes.size());
		if (first >= size)
		{
			return answer(416, "", "Content-Range: bytes */" + std::to_string(size) + "\r\n" + version.headers);
		}
		const std::string range = "bytes " + std::to_string(told) + "-" + std::to_string(told + size - first - 1) + "/" + std::to_string(size);
		return answer(206, version.bytes.substr(static_cast<size_t>(first)), "Content-Range: " + range + "\r\n" + version.headers);
	}

	bool isOfVersion(const std::string& head, const Version& version)
	{
		const std::string wanted = headerOf(head, "If-Range");
		return wanted.empty() || version.headers.find(": " + wanted + "\r\n") != std::string::npos;
	}

	std::string answerOf(const Version& version, Ranges ranges, const std::string& head)
	{
		const std::int64_t first = firstByteOf(head);
		const bool isPart = !headerOf(head, "Range").empty();
		const std::string whole = answer(200, version.bytes, version.headers);
		switch (ranges)
		{
		case Ranges::ErrorPage:
			return answer(404, std::string(100'000, 'x'));
		case Ranges::Shifted:
			return isPart ? partOf(version, first + 10, first + 10) : whole;
		case Ranges::ShiftedInSecret:
			return isPart ? partOf(version, first + 10, first) : whole;
		case Ranges::Honest:
			return isPart && isOfVersion(head, version) ? partOf(version, first, first) : whole;
		case Ranges::WithoutIfRange:
			return isPart ? partOf(version, first, first) : whole;
		default:
			return whole;
		}
	}

	class DownloadFile : public ::testing::Test
	{
	protected:
		/** Breaks the first answer off in its middle, then answers from the other version. */
		RawServer changingServer(const Version& before, const Version& after, Ranges ranges)
		{
			return RawServer(
				[=, this](Connection& connection)
				{
					for (;;)
					{
						const std::string head = connection.readHead();
						if (requestsSeen++ == 0)
						{
							const std::string whole = answer(200, before.bytes, before.headers);
							connection.send(whole.substr(0, whole.size() - before.bytes.size() / 2));
							return;
						}
						connection.send(answerOf(after, ranges, head));
					}
				});
		}

		static FCorvaneDownloadOptions patient()
		{
			FCorvaneDownloadOptions options;
			options.FirstWaitSeconds = 0.001;
			options.LongestWaitSeconds = 0.01;
			return options;
		}

		UCorvaneDownloadFile* start(const std::string& url, const FCorvaneDownloadOptions& options = patient(), std::string_view name = "file.bin")
		{
			++expected;
			return UCorvaneDownloadFile::Start(text(url), text(folder.path(name)), options,
				[this](const FCorvaneTransferReport& report)
				{
					reports.push_back(report);
				});
		}

		FCorvaneTransferReport finish()
		{
			EXPECT_TRUE(loop.WaitFor([this] { return reports.size() >= expected; }, patienceSeconds));
			loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
			EXPECT_EQ(reports.size(), expected); // each start has one outcome
			return reports.empty() ? FCorvaneTransferReport() : reports.back();
		}

		void expectNothingBeside(std::string_view name = "file.bin")
		{
			EXPECT_FALSE(folder.exists(std::string(name) + ".corvpart"));
			EXPECT_FALSE(folder.exists(std::string(name) + ".corvjournal"));
		}

		const TempDir folder;
		FGameLoop loop;
		std::atomic<int> requestsSeen{0};
		size_t expected = 0;
		std::vector<FCorvaneTransferReport> reports;
	};

	const std::string content = randomBytes(300'000);
} // namespace

TEST_F(DownloadFile, OfAServerThatChangesItsMindIsRightOrFailsWithItsReason)
{
	using Outcome = ECorvaneTransferOutcome;
	const std::string strong = "ETag: \"one\"\r\n", otherStrong = "ETag: \"two\"\r\n", weak = "ETag: W/\"one\"\r\n";
	const std::string sameLength(content.rbegin(), content.rend());
	const std::string shrunk = sameLength.substr(0, 100'000), grown = sameLength + randomBytes(50'000);
	struct Case
	{
		const char* name;
		std::string before, after;
		std::string bytes;
		Ranges ranges;
		Outcome outcome;
		int restarts;
	};
	const Case cases[] = {
		{"the same file", strong, strong, content, Ranges::Honest, Outcome::Succeeded, 0},
		{"the same file by a weak tag", weak, weak, content, Ranges::Honest, Outcome::Succeeded, 0},
		{"the same file without validators", "", "", content, Ranges::Honest, Outcome::Succeeded, 0},
		{"the same length, strong", strong, otherStrong, sameLength, Ranges::Honest, Outcome::Succeeded, 1},
		{"the same length, strong, If-Range ignored", strong, otherStrong, sameLength, Ranges::WithoutIfRange, Outcome::Succeeded, 1},
		{"the same length, weak", weak, weak, sameLength, Ranges::Honest, Outcome::Succeeded, 1},
		{"the same length, no validators", "", "", sameLength, Ranges::Honest, Outcome::Succeeded, 1},
		{"shrunk, strong", strong, otherStrong, shrunk, Ranges::WithoutIfRange, Outcome::Succeeded, 1},
		{"shrunk, no validators", "", "", shrunk, Ranges::Honest, Outcome::Succeeded, 1},
		{"grown, strong", strong, otherStrong, grown, Ranges::WithoutIfRange, Outcome::Succeeded, 1},
		{"grown, no validators", "", "", grown, Ranges::Honest, Outcome::Succeeded, 1},
		{"ranges ignored", strong, strong, content, Ranges::Ignored, Outcome::Succeeded, 1},
		{"another part", strong, strong, content, Ranges::Shifted, Outcome::Succeeded, 1},
		{"another part in secret, no validators", "", "", content, Ranges::ShiftedInSecret, Outcome::Succeeded, 1},
		{"an error's page", strong, strong, content, Ranges::ErrorPage, Outcome::ServerError, 0},
	};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		requestsSeen = 0;
		folder.write("file.bin", "old");
		const RawServer server = changingServer({content, each.before}, {each.bytes, each.after}, each.ranges);
		start(server.url());
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_EQ(report.Restarts, each.restarts);
		EXPECT_EQ(report.RestartReasons.Num(), each.restarts);
		const bool isThere = each.outcome == Outcome::Succeeded;
		EXPECT_TRUE(folder.read("file.bin") == (isThere ? each.bytes : "old"));
		EXPECT_EQ(folder.exists("file.bin.corvpart"), !isThere);
		std::filesystem::remove(folder.path("file.bin.corvpart"));
		std::filesystem::remove(folder.path("file.bin.corvjournal"));
	}
}

TEST_F(DownloadFile, GoesOnAfterAPauseAndInALaterStartWithoutAByteTwice)
{
	Gate rest;
	std::atomic<std::int64_t> sent{0};
	const Version version{randomBytes(3'000'000), "ETag: \"one\"\r\n"};
	const RawServer server(
		[&](Connection& connection)
		{
			for (;;)
			{
				const std::string head = connection.readHead();
				const std::string whole = answerOf(version, Ranges::Honest, head);
				const size_t begin = whole.find("\r\n\r\n") + 4;
				if (requestsSeen++ < 2) // half of what is left, and then silence
				{
					const size_t half = (whole.size() - begin) / 2;
					sent += static_cast<std::int64_t>(half);
					connection.send(whole.substr(0, begin + half));
					connection.waitForPeer();
					return;
				}
				sent += static_cast<std::int64_t>(whole.size() - begin);
				connection.send(whole);
			}
		});
	UCorvaneDownloadFile* const first = start(server.url());
	ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes == 1'500'000; }, patienceSeconds));
	first->Pause();
	ASSERT_TRUE(loop.WaitFor([&] { return first->IsPaused(); }, patienceSeconds));
	first->Continue();
	ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes == 2'250'000; }, patienceSeconds));
	first->Cancel();
	FCorvaneTransferReport report = finish();
	EXPECT_EQ(report.Outcome, ECorvaneTransferOutcome::Cancelled);
	EXPECT_EQ(report.BytesLeft, 2'250'000);
	EXPECT_FALSE(folder.exists("file.bin"));

	FCorvaneDownloadOptions options = patient();
	options.Hash = text("sha256");
	start(server.url(), options);
	report = finish();
	EXPECT_EQ(report.Outcome, ECorvaneTransferOutcome::Succeeded) << utf8(report.Sentence);
	EXPECT_EQ(report.TakenOverBytes, 2'250'000);
	EXPECT_EQ(report.TransferredBytes, 750'000);
	EXPECT_EQ(report.Hash.Len(), 64);
	EXPECT_EQ(sent, 3'000'000);
	EXPECT_TRUE(folder.read("file.bin") == version.bytes);
	expectNothingBeside();
}

TEST_F(DownloadFile, EndsWithOneReasonAndTouchesNothing)
{
	using Outcome = ECorvaneTransferOutcome;
	const RawServer server(answering([](const std::string&) { return answer(200, content); }));
	const std::string dead = "http://" + LoopbackListener().authority() + "/";
	struct Case
	{
		const char* name;
		std::string url;
		std::function<void(FCorvaneDownloadOptions&)> change;
		Outcome outcome;
	};
	const Case cases[] = {
		{"no address", "file", {}, Outcome::Refused},
		{"another protocol", "ftp://host/file", {}, Outcome::Refused},
		{"a hash that is none", server.url(), [](auto& o) { o.Hash = text("sha256:12"); }, Outcome::Refused},
		{"no attempt", server.url(), [](auto& o) { o.Attempts = 0; }, Outcome::Refused},
		{"a negative size", server.url(), [](auto& o) { o.ExpectedSize = -2; }, Outcome::Refused},
		{"a negative limit", server.url(), [](auto& o) { o.BytesPerSecond = -1; }, Outcome::Refused},
		{"its own header", server.url(), [](auto& o) { o.Headers.Add(text("range"), text("bytes=0-")); }, Outcome::Refused},
		{"a file that may not be replaced", server.url(), [](auto& o) { o.IfTargetExists = ECorvaneIfTargetExists::Fail; }, Outcome::Refused},
		{"nobody there", dead, [](auto& o) { o.Attempts = 2; }, Outcome::NoConnection},
		{"another size", server.url(), [](auto& o) { o.ExpectedSize = 5; }, Outcome::WrongSize},
		{"another hash", server.url(), [](auto& o) { o.Hash = text("md5:00112233445566778899aabbccddeeff"); }, Outcome::WrongHash},
		{"what is there is enough", server.url(), [](auto& o) { o.IfTargetExists = ECorvaneIfTargetExists::Keep; }, Outcome::Succeeded},
	};
	folder.write("file.bin", "old");
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		FCorvaneDownloadOptions options = patient();
		if (each.change)
		{
			each.change(options);
		}
		start(each.url, options);
		EXPECT_EQ(reports.size() + 1, expected); // not inside the call
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_FALSE(report.Sentence.IsEmpty());
		EXPECT_EQ(folder.read("file.bin"), "old");
		expectNothingBeside();
	}
}

TEST_F(DownloadFile, HasItsTargetForItselfAndEndsInOrderWithTheProgram)
{
	const RawServer server(
		[](Connection& connection)
		{
			connection.readHead();
			connection.send(answer(200, content, "ETag: \"one\"\r\n").substr(0, 200'000));
			connection.waitForPeer();
		});
	UCorvaneDownloadFile* const first = start(server.url());
	ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes > 190'000; }, patienceSeconds));
	start(server.url());
	ASSERT_TRUE(loop.WaitFor([this] { return !reports.empty(); }, patienceSeconds));
	EXPECT_EQ(reports.front().Outcome, ECorvaneTransferOutcome::Refused);

	loop.Shutdown();
	ASSERT_EQ(reports.size(), 2u);
	EXPECT_EQ(reports.back().Outcome, ECorvaneTransferOutcome::Ended);
	EXPECT_EQ(folder.read("file.bin.corvpart"), content.substr(0, static_cast<size_t>(reports.back().BytesLeft)));
	EXPECT_GT(reports.back().BytesLeft, 190'000);
}
