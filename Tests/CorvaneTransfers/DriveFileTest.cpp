#include "CorvaneBPLibrary.h"
#include "CorvaneDownloadFile.h"
#include "GameLoop.h"
#include "RandomBytes.h"
#include "RawServer.h"
#include "TempDir.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <gtest/gtest.h>

namespace
{
	using Outcome = ECorvaneTransferOutcome;

	const std::string content = randomBytes(300'000);
	const std::string htmlType = "Content-Type: text/html; charset=utf-8\r\n";
	const std::string fileType = "Content-Type: application/octet-stream\r\nETag: \"one\"\r\n";

	std::string formTo(const std::string& action)
	{
		return "<form action=\"" + action + "\" method=\"get\"><input type=\"hidden\" name=\"id\" value=\"one\">" +
			   "<input type=\"hidden\" name=\"confirm\" value=\"t\"></form>";
	}

	/** @return the file, or the part of it that is asked for. */
	std::string fileAnswer(const std::string& head, const std::string& type = fileType)
	{
		const std::string range = headerOf(head, "Range"); // "bytes=N-"
		if (range.empty())
		{
			return answer(200, content, type);
		}
		const size_t first = std::stoul(range.substr(6));
		const std::string span = std::to_string(first) + "-" + std::to_string(content.size() - 1) + "/" + std::to_string(content.size());
		return answer(206, content.substr(first), "Content-Range: bytes " + span + "\r\n" + type);
	}

	class DriveFile : public ::testing::Test
	{
	protected:
		UCorvaneDownloadFile* start(const RawServer& server, FCorvaneDownloadOptions options = {}, const std::string& id = "one")
		{
			UCorvaneBPLibrary::setGoogleDriveBase(text(server.url("")));
			options.FirstWaitSeconds = 0.001;
			reports.clear();
			UCorvaneDownloadFile* const transfer = UCorvaneDownloadFile::StartDriveFile(text(id), text(folder.path("file.bin")), options,
				[this](const FCorvaneTransferReport& report) { reports.push_back(report); });
			EXPECT_TRUE(reports.empty()); // not inside the call
			return transfer;
		}

		FCorvaneTransferReport finish()
		{
			loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
			EXPECT_EQ(reports.size(), 1u);
			return reports.empty() ? FCorvaneTransferReport() : reports.front();
		}

		void expectNothingBeside() const
		{
			EXPECT_FALSE(folder.exists("file.bin.corvpart"));
			EXPECT_FALSE(folder.exists("file.bin.corvjournal"));
		}

		const TempDir folder;
		FGameLoop loop;
		std::vector<FCorvaneTransferReport> reports;
	};
} // namespace

TEST_F(DriveFile, ComesThroughThePageAndGoesOnWhereItBrokeOff)
{
	enum class Later
	{
		SamePlace,
		/** What the form had named is no more; a new one leads on. */
		PlaceIsGone,
		PlaceIsAPage
	};
	for (const bool tagged : {true, false})
	{
		for (const Later later : {Later::SamePlace, Later::PlaceIsGone, Later::PlaceIsAPage})
		{
			SCOPED_TRACE(std::to_string(static_cast<int>(later)) + (tagged ? " tagged" : " compared"));
			const std::string type = tagged ? fileType : "Content-Type: application/octet-stream\r\n";
			std::atomic<int> pages{0}, files{0};
			const RawServer server(
				[&](Connection& connection)
				{
					for (;;)
					{
						const std::string head = connection.readHead();
						if (targetOf(head).starts_with("/uc"))
						{
							connection.send(answer(200, formTo("/download" + std::to_string(pages++)), htmlType));
							continue;
						}
						const int number = files++;
						if (number == 0)
						{
							connection.send(fileAnswer(head, type).substr(0, 200'000));
							return;
						}
						const bool gone = number == 1 && later != Later::SamePlace;
						connection.send(!gone                         ? fileAnswer(head, type)
										: later == Later::PlaceIsGone ? answer(403, "gone")
																	  : answer(200, "Hello", htmlType));
					}
				});
			start(server);
			const FCorvaneTransferReport report = finish();
			EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
			EXPECT_TRUE(folder.read("file.bin") == content);
			EXPECT_EQ(report.TransferredBytes, static_cast<int64>(content.size()));
			EXPECT_EQ(report.Restarts, 0);
			EXPECT_EQ(pages, later == Later::SamePlace ? 1 : 2);
			expectNothingBeside();
		}
	}
}

TEST_F(DriveFile, GoesOnInALaterStartThroughThePageAgain)
{
	for (const bool behindPage : {true, false})
	{
		SCOPED_TRACE(behindPage ? "behind a page" : "given at once");
		std::atomic<bool> isLater{false};
		const RawServer server(
			[&](Connection& connection)
			{
				for (;;)
				{
					const std::string head = connection.readHead();
					if (behindPage && targetOf(head).starts_with("/uc"))
					{
						EXPECT_EQ(headerOf(head, "Range"), ""); // a page has no parts
						connection.send(answer(200, formTo("/download"), htmlType));
						continue;
					}
					if (!isLater)
					{
						connection.send(fileAnswer(head).substr(0, 200'000));
						connection.waitForPeer();
						return;
					}
					connection.send(fileAnswer(head));
				}
			});
		UCorvaneDownloadFile* const first = start(server);
		ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes > 190'000; }, patienceSeconds));
		first->Cancel();
		FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, Outcome::Cancelled);
		EXPECT_GT(report.BytesLeft, 190'000);

		isLater = true;
		start(server);
		report = finish();
		EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
		EXPECT_GT(report.TakenOverBytes, 190'000);
		EXPECT_EQ(report.TakenOverBytes + report.TransferredBytes, static_cast<int64>(content.size()));
		EXPECT_TRUE(folder.read("file.bin") == content);
		expectNothingBeside();
		std::filesystem::remove(folder.path("file.bin"));
	}
}

TEST_F(DriveFile, StopsWhileThePageIsOnItsWay)
{
	std::atomic<int> heads{0};
	const RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send(answer(200, formTo("/download"), htmlType).substr(0, 150));
			++heads;
			connection.waitForPeer();
		});
	UCorvaneDownloadFile* const transfer = start(server);
	ASSERT_TRUE(loop.WaitFor([&] { return heads == 1; }, patienceSeconds));
	transfer->Pause();
	ASSERT_TRUE(loop.WaitFor([&] { return transfer->IsPaused(); }, patienceSeconds));
	transfer->Continue();
	ASSERT_TRUE(loop.WaitFor([&] { return heads == 2; }, patienceSeconds));
	transfer->Cancel();
	EXPECT_EQ(finish().Outcome, Outcome::Cancelled);
	expectNothingBeside();
}

TEST_F(DriveFile, IsNeverAPage)
{
	struct Case
	{
		const char* name;
		std::string page; // whole answers
		std::string file;
		Outcome outcome;
		std::string id = "one";
	};
	const std::string form = answer(200, formTo("/download"), htmlType);
	const std::string attached = "Content-Disposition: Attachment; filename=a.html\r\n";
	const std::string quota = "<title>Quota exceeded</title>";
	const Case cases[] = {
		{"no ID", form, "", Outcome::Refused, ""},
		{"a link for an ID", form, "", Outcome::Refused, "d/one/view?usp=sharing"},
		{"a file that is a page", answer(200, content, htmlType + attached), "", Outcome::Succeeded},
		{"the same behind a form", form, answer(200, content, htmlType + attached), Outcome::Succeeded},
		{"a file of no type", answer(200, content), "", Outcome::Succeeded},
		{"quota at once", answer(200, quota, htmlType), "", Outcome::QuotaReached},
		{"quota behind the form", form, answer(403, quota, htmlType), Outcome::QuotaReached},
		{"a page to sign in", answer(200, "<title>Sign in</title>", htmlType), "", Outcome::NotPermitted},
		{"no permission, without a page", answer(401, ""), "", Outcome::NotPermitted},
		{"no permission behind the form", form, answer(403, "x"), Outcome::NotPermitted},
		{"no such file", answer(404, "<title>Not found</title>", htmlType), "", Outcome::ServerError},
		{"another page", answer(200, "<p>Welcome", htmlType), "", Outcome::ServerError},
		{"another page behind the form", form, answer(200, "<p>Welcome", htmlType), Outcome::ServerError},
		{"forms in a circle", form, form, Outcome::ServerError},
		{"a page that does not end", answer(200, std::string(5'000'000, 'x'), htmlType), "", Outcome::ServerError},
		{"a page that breaks off", form.substr(0, form.size() - 10), "", Outcome::Dropped},
		{"a server that cannot now", answer(503, "<title>Sorry</title>", htmlType), "", Outcome::ServerError},
	};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		folder.write("file.bin", "old");
		const RawServer server(
			[&](Connection& connection) { connection.send(targetOf(connection.readHead()).starts_with("/uc") ? each.page : each.file); });
		FCorvaneDownloadOptions options;
		options.Attempts = 2;
		start(server, options, each.id);
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_FALSE(report.Sentence.IsEmpty());
		EXPECT_TRUE(folder.read("file.bin") == (each.outcome == Outcome::Succeeded ? content : "old"));
		expectNothingBeside();
		const bool isRepeated = std::string(each.name) == "a page that breaks off" || each.page.starts_with("HTTP/1.1 503");
		EXPECT_EQ(report.Attempts, each.outcome == Outcome::Refused ? 0 : isRepeated ? 2 : 1);
	}
}

TEST_F(DriveFile, TellsSecretsToThePagesOwnHostOnly)
{
	const std::string cookies = "Set-Cookie: download_warning_1=ab; Path=/; Secure\r\nset-cookie: NID=5\r\n";
	const RawServer other(answering([](const std::string& head) { return fileAnswer(head); }));
	for (const bool isElsewhere : {false, true})
	{
		const RawServer server(answering(
			[&](const std::string& head)
			{
				const std::string action = isElsewhere ? other.url("/download") : "/download";
				return targetOf(head).starts_with("/uc") ? answer(200, formTo(action), htmlType + cookies) : fileAnswer(head);
			}));
		FCorvaneDownloadOptions options;
		options.Headers.Add(text("Authorization"), text("Bearer key"));
		options.Headers.Add(text("Cookie"), text("mine=1"));
		options.Headers.Add(text("X-Own"), text("yes"));
		start(server, options);
		ASSERT_EQ(finish().Outcome, Outcome::Succeeded);
		const std::string page = server.requests().front();
		EXPECT_EQ(targetOf(page), "/uc?id=one&export=download");
		EXPECT_EQ(headerOf(page, "Cookie"), "mine=1");
		const std::string file = isElsewhere ? other.requests().back() : server.requests().back();
		EXPECT_EQ(targetOf(file), "/download?id=one&confirm=t");
		EXPECT_EQ(headerOf(file, "Cookie"), isElsewhere ? "" : "mine=1; download_warning_1=ab; NID=5");
		EXPECT_EQ(headerOf(file, "Authorization"), isElsewhere ? "" : "Bearer key");
		EXPECT_EQ(headerOf(file, "X-Own"), "yes");
	}
}
