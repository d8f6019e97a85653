#include "CorvaneTransferQueue.h"
#include "CorvaneUploadResumable.h"
#include "GameLoop.h"
#include "HttpModule.h"
#include "Interfaces/IHttpResponse.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Tus.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Origin.h"
#include "Listen.h"
#include "LogCapture.h"
#include "LoopbackListener.h"
#include "QuickPlace.h"
#include "RandomBytes.h"
#include "TempDir.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Outcome = ECorvaneTransferOutcome;
using testing::HasSubstr;

namespace
{
	const std::string uploadedFile = randomBytes(50'000);

	class Resumable : public ::testing::Test
	{
	protected:
		/** Those under which the tests run once more; see CMakeLists.txt. */
		static FGameLoopSettings conditions()
		{
			FGameLoopSettings settings;
			settings.bCollectAfterEveryTick = std::getenv("CORVANE_TEST_COLLECT") != nullptr;
			settings.http.bForceGameThreadCallbacks = std::getenv("CORVANE_TEST_GAME_THREAD") != nullptr;
			return settings;
		}

		FCorvaneResumableOptions patient() const
		{
			FCorvaneResumableOptions options;
			options.PieceBytes = 20'000;
			options.FirstWaitSeconds = 0.001;
			options.LongestWaitSeconds = 2;
			options.JournalFolder = text(folder.path("notes"));
			options.Headers.Add(TEXT("Authorization"), TEXT("Bearer secret"));
			return options;
		}

		FCorvaneTransferReport send(const std::string& url, const std::string& path, const FCorvaneResumableOptions& options)
		{
			std::vector<FCorvaneTransferReport> reports;
			UCorvaneUploadResumable::Start(
				text(url), text(path), options, [&](const FCorvaneTransferReport& report) { reports.push_back(report); });
			EXPECT_TRUE(reports.empty()) << "not inside the call";
			loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
			EXPECT_EQ(reports.size(), 1u);
			return reports.empty() ? FCorvaneTransferReport() : reports[0];
		}

		/** What the servers of the lab have under an address, by its last request. */
		std::string stored(const std::string& url)
		{
			std::string bytes;
			const FHttpRequestRef request = FHttpModule::Get().CreateRequest();
			request->SetURL(text(url));
			bool done = false;
			request->OnProcessRequestComplete().BindLambda(
				[&](FHttpRequestPtr, FHttpResponsePtr response, bool)
				{
					bytes = response.IsValid() && response->GetResponseCode() == 200 ? bytesOf(response->GetContent()) : "none";
					done = true;
				});
			request->ProcessRequest();
			loop.WaitFor([&] { return done; }, patienceSeconds);
			return bytes;
		}

		/** @return how many requests of a method came with that header, or without it. */
		int count(const std::string& method, const std::string& header, bool has)
		{
			int number = 0;
			for (const Lab::Exchange& each : origin.log())
			{
				number += each.request->method == method && each.request->header(header).empty() != has ? 1 : 0;
			}
			return number;
		}

		bool nothingIsNoted() const { return !folder.exists("notes") || std::filesystem::is_empty(folder.path("notes")); }

		const TempDir folder{quickPlace()};
		Lab::Origin origin;
		FGameLoop loop{conditions()};
	};

	Lab::Behaviour code(int number, const std::string& retryAfter = "")
	{
		return Lab::status({.code = number, .retryAfter = retryAfter, .text = "No."});
	}
} // namespace

TEST_F(Resumable, HasOneOutcomeForEachKindOfTrouble)
{
	using namespace Lab;
	struct Case
	{
		const char* name;
		std::function<void(Origin&, const Behaviour& server)> prepare;
		Outcome outcome = Outcome::Succeeded;
		int restarts = 0;
		const char* sentence = "";
		std::function<void(FCorvaneResumableOptions&)> wish = [](FCorvaneResumableOptions&) {};
	};
	const auto at = [](const char* place, std::vector<Behaviour> (*make)(const Behaviour&))
	{ return [=](Origin& where, const Behaviour& server) { where.setPlace(place, Behaviour(make(server))); }; };
	const auto first = [](const char* place, const Behaviour& trouble)
	{
		return [=](Origin& where, const Behaviour& server)
		{ where.at(place, [=](const Request& request) { return request.target == "/files/1" && request.visit == 1 ? trouble : server; }); };
	};
	const auto always = [](const char* place, const Behaviour& trouble)
	{ return [=](Origin& where, const Behaviour&) { where.at(place, trouble); }; };
	const auto tells = [](const char* name, const char* value) {
		return [=](Origin& where, const Behaviour& server) { where.at("POST /files", std::vector{server, headers({{name, value}})}); };
	};
	const auto silence = [](FCorvaneResumableOptions& options) { options.SilenceSeconds = 1; };
	const auto sums = [](FCorvaneResumableOptions& options) { options.PieceChecksum = TEXT("sha256"); };
	const auto atOnce = [](FCorvaneResumableOptions& options) { options.bFirstPieceAtOnce = true; };
	using List = std::vector<Behaviour>;
	const char* const posts = "POST /files";
	const char* const heads = "HEAD /files*";
	const char* const patches = "PATCH /files*";
	const Case cases[] = {
		{"none", [](Origin&, const Behaviour&) {}},
		{"the answer to a beginning is lost", at(posts,
												  [](const Behaviour& server) {
													  return List{server, onlyFirst(1, drop())};
												  })},
		{"the answer to a piece is lost", at(patches,
											  [](const Behaviour& server) {
												  return List{server, onlyFirst(1, drop())};
											  })},
		{"a piece breaks off", at(patches,
								   [](const Behaviour& server) {
									   return List{server, onlyFirst(2, upload({.hangsUpAfter = 7000}))};
								   })},
		{"each piece breaks off", at(patches,
									  [](const Behaviour& server) {
										  return List{server, upload({.hangsUpAfter = 7000})};
									  })},
		{"no byte of a piece arrives", always(patches, upload({.hangsUpAfter = 1000})), Outcome::Dropped, 0, "broke off"},
		{"silence", first(patches, stall()), Outcome::Succeeded, 0, "", silence},
		{"the server is elsewhere", first(patches, code(409))},
		{"the server is elsewhere for ever", always(patches, code(409)), Outcome::ServerError, 0, "another place"},
		{"forgotten (404)", first(patches, code(404)), Outcome::Succeeded, 1},
		{"forgotten (410)", first(patches, code(410)), Outcome::Succeeded, 1},
		{"forbidden (403)", first(patches, code(403)), Outcome::Succeeded, 1},
		{"forgotten each time", always(patches, code(410)), Outcome::ServerError, 4, "no more (410)"},
		{"another version", always(posts, code(412)), Outcome::Refused, 0, "another version"},
		{"another version in its answers", tells("Tus-Resumable", "0.2.2"), Outcome::Refused, 0, "another version"},
		{"only other versions", tells("Tus-Version", "0.2.2"), Outcome::Refused, 0, "another version"},
		{"this version among others", tells("Tus-Version", "0.2.2, 1.0.0")},
		{"too much, at once", always(posts, code(413)), Outcome::ServerError, 0, "does not take so much"},
		{"too much, in its middle", always(patches, upload({.refusesAfter = 1000, .code = 413})), Outcome::ServerError, 0,
			"does not take so much"},
		{"locked", first(patches, code(423))},
		{"locked for ever", always(patches, code(423)), Outcome::ServerError, 0, "somebody else"},
		{"damaged", first(patches, code(460)), Outcome::Succeeded, 0, "", sums},
		{"sums, and first bytes at once", [](Origin&, const Behaviour&) {}, Outcome::Succeeded, 0, "",
			[=](FCorvaneResumableOptions& options)
			{
				sums(options);
				atOnce(options);
			}},
		{"first bytes at once are not heeded",
			at(posts,
				[](const Behaviour& server) {
					return List{server, headers({{"Upload-Offset", "0"}})};
				}),
			Outcome::Succeeded, 0, "", atOnce},
		{"busy, with a wait", first(patches, code(503, "1"))},
		{"busy, with a long wait", always(patches, code(503, "3600")), Outcome::ServerError, 0, "3600 seconds"},
		{"a piece is wanted elsewhere", always(patches, redirect({.to = "/elsewhere", .code = 307})), Outcome::ServerError, 0,
			"at another address (307)"},
		{"refused", always(posts, code(401)), Outcome::ServerError, 0, "401"},
		{"no such place", always(posts, code(404)), Outcome::ServerError, 0, "404"},
		{"another kind of server", always(posts, "Hello."), Outcome::ServerError, 0, "no address"},
		{"an address of another kind",
			at(posts,
				[](const Behaviour& server) {
					return List{server, headers({{"Location", "ftp://host/1"}})};
				}),
			Outcome::ServerError, 0, "nothing is sent to"},
		{"it does not tell how far it is",
			[=](Origin& where, const Behaviour& server)
			{
				first(patches, code(503))(where, server);
				where.at(heads, code(200));
			},
			Outcome::ServerError, 0, "does not tell how far"},
		{"it takes nothing", always(patches, List{code(204), headers({{"Upload-Offset", "0"}})}), Outcome::ServerError, 0, "takes no more"},
	};
	const std::string path = folder.write("file.bin", uploadedFile);
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.name);
		std::filesystem::remove_all(folder.path("notes"));
		Origin fresh;
		const Behaviour server = tus();
		fresh.at("/files*", server);
		tested.prepare(fresh, server);
		FCorvaneResumableOptions options = patient();
		options.bResume = false;
		options.Metadata.Add(TEXT("owner"), TEXT("me"));
		tested.wish(options);
		const FCorvaneTransferReport report = send(fresh.url("/files"), path, options);
		EXPECT_EQ(report.Outcome, tested.outcome) << utf8(report.Sentence);
		EXPECT_EQ(report.Restarts, tested.restarts);
		EXPECT_THAT(utf8(report.Sentence), HasSubstr(tested.sentence));
		if (tested.outcome == Outcome::Succeeded)
		{
			const std::string told(fresh.log().front().request->header("Upload-Metadata"));
			const std::string last = fresh.log().back().request->target;
			EXPECT_THAT(told, AllOf(HasSubstr("filename ZmlsZS5iaW4="), HasSubstr("owner bWU="))) << "base64 of file.bin, of me";
			EXPECT_TRUE(stored(fresh.url(last)) == uploadedFile);
			EXPECT_TRUE(nothingIsNoted());
		}
	}
}

TEST_F(Resumable, GoesOnWithWhatAnEarlierStartHasBroughtUnlessItIsNotTheSame)
{
	struct Case
	{
		const char* name;
		std::function<void(const std::string& file, const std::filesystem::path& journal)> change;
		bool takenOver;
		int restarts;
		std::function<void(FCorvaneResumableOptions&)> wish = [](FCorvaneResumableOptions&) {};
	};
	namespace fs = std::filesystem;
	const auto rewrite = [](const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; };
	const auto keepTime = [=](const fs::path& path, const std::string& bytes)
	{
		const fs::file_time_type time = fs::last_write_time(path);
		rewrite(path, bytes);
		fs::last_write_time(path, time);
	};
	const std::string other(uploadedFile.rbegin(), uploadedFile.rend());
	const Case cases[] = {
		{"the same", [](const std::string&, const fs::path&) {}, true, 0},
		{"the end of the journal is torn",
			[](const std::string&, const fs::path& journal) { std::ofstream(journal, std::ios::app) << "ke"; }, true, 0},
		{"the journal is damaged", [=](const std::string&, const fs::path& journal) { rewrite(journal, "upload\t1\nkept\t1\n"); }, false,
			0},
		{"it is not wanted", [](const std::string&, const fs::path&) {}, false, 0,
			[](FCorvaneResumableOptions& options) { options.bResume = false; }},
		{"another size", [=](const std::string& file, const fs::path&) { rewrite(file, uploadedFile + "x"); }, false, 1},
		{"another time",
			[](const std::string& file, const fs::path&)
			{ fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(2)); },
			false, 1},
		{"other bytes, with the same size and time", [=](const std::string& file, const fs::path&) { keepTime(file, other); }, false, 1},
	};
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.name);
		Lab::Origin fresh;
		const Lab::Behaviour server = Lab::tus();
		fresh.at("/files*", server);
		fresh.at("PATCH /files*", Lab::inTurn({server, Lab::upload({.hangsUpAfter = 1000})}));
		const std::string path = folder.write("file.bin", uploadedFile);
		FCorvaneResumableOptions options = patient();
		options.Attempts = 1;
		for (const int64 before : {0, 20'000})
		{
			const FCorvaneTransferReport broken = send(fresh.url("/files"), path, options);
			ASSERT_EQ(broken.Outcome, Outcome::Dropped);
			EXPECT_EQ(broken.TakenOverBytes, before);
			EXPECT_EQ(broken.BytesLeft, 20'000);
			EXPECT_THAT(utf8(broken.HowToGoOn), HasSubstr("goes on behind them"));
			fresh.at("PATCH /files*", Lab::upload({.hangsUpAfter = 1000}));
		}

		const fs::path journal = *fs::directory_iterator(folder.path("notes"));
		fresh.at("PATCH /files*", server);
		tested.change(path, journal);
		tested.wish(options);
		const FCorvaneTransferReport report = send(fresh.url("/files"), path, options);
		EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
		EXPECT_EQ(report.TakenOverBytes, tested.takenOver ? 20'000 : 0);
		EXPECT_EQ(report.TransferredBytes + report.TakenOverBytes, report.TotalBytes);
		EXPECT_EQ(report.Restarts, tested.restarts);
		EXPECT_TRUE(stored(fresh.url(fresh.log().back().request->target)) == folder.read("file.bin"));
		EXPECT_TRUE(nothingIsNoted());
	}
}

TEST_F(Resumable, IsTakenUpByAQueueAfterARestartUnlessItsEndpointHasASecret)
{
	const Lab::Behaviour server = Lab::tus();
	origin.at("/files*", server);
	FCorvaneResumableOptions options = patient();
	options.Attempts = 1;
	const std::string path = folder.write("file.bin", uploadedFile);
	for (const char* endpoint : {"/files", "/files?key=1"})
	{
		origin.at("PATCH /files*", Lab::inTurn({server, Lab::upload({.hangsUpAfter = 1000})}));
		ASSERT_EQ(send(origin.url(endpoint), path, options).Outcome, Outcome::Dropped);
	}
	origin.at("PATCH /files*", server);

	UCorvaneTransferQueue* const queue = UCorvaneTransferQueue::GetTransferQueue(text("uploads"));
	int idle = 0;
	std::vector<FCorvaneTransferReport> reports;
	Listen(queue->OnTransferEnd, [&](UCorvaneTransfer*, const FCorvaneTransferReport& report) { reports.push_back(report); });
	Listen(queue->OnIdle, [&](const FCorvaneQueueReport&) { ++idle; });
	queue->ResumeUploads(options, text("http://elsewhere"));
	EXPECT_TRUE(loop.WaitFor([&] { return idle == 1; }, patienceSeconds));
	EXPECT_TRUE(reports.empty());
	queue->ResumeUploads(options, text(origin.url("/")));
	EXPECT_TRUE(loop.WaitFor([&] { return idle == 2; }, patienceSeconds));
	ASSERT_EQ(reports.size(), 1u);
	EXPECT_EQ(reports[0].Outcome, Outcome::Succeeded) << utf8(reports[0].Sentence);
	EXPECT_EQ(reports[0].TakenOverBytes, 20'000);
	EXPECT_FALSE(nothingIsNoted()) << "of the other";
}

TEST_F(Resumable, StartsOverWhenTheServerHasLetTheUploadExpire)
{
	const Lab::Behaviour server = Lab::tus({.expiresAfter = Lab::Milliseconds(0)});
	origin.at("/files*", server);
	FCorvaneResumableOptions options = patient();
	options.Attempts = 1;
	const std::string path = folder.write("file.bin", uploadedFile);
	EXPECT_EQ(send(origin.url("/files"), path, options).Outcome, Outcome::ServerError) << "each is gone at once";
	origin.at("/files*", Lab::tus());
	const FCorvaneTransferReport report = send(origin.url("/files"), path, options);
	EXPECT_EQ(report.Outcome, Outcome::Succeeded);
	ASSERT_EQ(report.RestartReasons.Num(), 1);
	EXPECT_THAT(utf8(report.RestartReasons[0]), HasSubstr("only for so long"));
	EXPECT_EQ(count("HEAD", "Tus-Resumable", true), 0) << "nobody need be asked";
}

TEST_F(Resumable, EndsWhenTheFileChangesWhileItIsSent)
{
	const std::string path = folder.write("file.bin", uploadedFile);
	const Lab::Behaviour server = Lab::tus();
	const auto change = [path](const Lab::Request&)
	{
		std::ofstream(path, std::ios::app) << "more";
		return Lab::Behaviour(std::vector<Lab::Behaviour>{});
	};
	origin.at("/files*", server);
	origin.at("PATCH /files*", server, Lab::onlyFirst(1, Lab::Behaviour(change)));
	const FCorvaneTransferReport report = send(origin.url("/files"), path, patient());
	EXPECT_EQ(report.Outcome, Outcome::CannotRead);
	EXPECT_THAT(utf8(report.Sentence), HasSubstr("changed while it was sent"));
	EXPECT_TRUE(nothingIsNoted());
}

TEST_F(Resumable, ThrowsAwayWhatIsCancelledWhileItWaitsForItsTurn)
{
	origin.at("/files*", Lab::tus());
	UCorvaneTransferQueue::GetTransferQueue(text("slow"))->SetLimits(1, 1, 100);
	FCorvaneResumableOptions options = patient();
	options.PieceBytes = 1024;
	options.Queue = text("slow");
	options.bTerminateOnCancel = true;
	FCorvaneTransferReport report;
	UCorvaneUploadResumable* const upload = UCorvaneUploadResumable::Start(text(origin.url("/files")),
		text(folder.write("file.bin", uploadedFile)), options, [&](const FCorvaneTransferReport& told) { report = told; });
	ASSERT_TRUE(loop.WaitFor([&] { return upload->GetReport().Attempts == 3; }, patienceSeconds)); // its second piece, in ten seconds
	upload->Cancel();
	loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
	EXPECT_EQ(report.Outcome, Outcome::Cancelled);
	EXPECT_THAT(utf8(report.Sentence), HasSubstr("has thrown it away"));
	EXPECT_EQ(count("DELETE", "Tus-Resumable", true), 1);
	EXPECT_TRUE(nothingIsNoted());
}

TEST_F(Resumable, KeepsSecretsFromOtherHostsAndFromWhatIsWritten)
{
	struct Case
	{
		const char* name;
		const char* host; // where uploads are said to be
		bool redirects; // the beginning leads to another host
		bool stays; // on the host that was asked
	};
	const Case cases[] = {
		{"the same host", "", false, true}, {"another host", "localhost", false, false}, {"another host by a redirect", "", true, false}};
	const std::string path = folder.write("file.bin", uploadedFile);
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.name);
		Lab::Origin fresh;
		const Lab::Behaviour server = Lab::tus({.host = tested.host});
		fresh.at("/files*", server);
		fresh.at("PATCH /files*", Lab::inTurn({server, Lab::upload({.hangsUpAfter = 1000}), server}));
		fresh.at("/begin", Lab::redirect({.to = "/files", .code = 307, .host = "localhost"}));
		std::string url = fresh.url(tested.redirects ? "/begin?key=secret" : "/files?key=secret");
		url.insert(url.find("//") + 2, "me:secret@");
		FCorvaneResumableOptions options = patient();
		options.Headers.Add(TEXT("X-Key"), TEXT("secret"));
		options.Attempts = 1;
		const LogCapture log;
		FCorvaneTransferReport report = send(url, path, options);
		ASSERT_EQ(report.Outcome, Outcome::Dropped) << utf8(report.Sentence);
		for (const LogCapture::Line& line : log.lines())
		{
			EXPECT_THAT(line.text, Not(HasSubstr("secret")));
		}
		const std::filesystem::path journal = *std::filesystem::directory_iterator(folder.path("notes"));
		EXPECT_THAT(folder.read("notes/" + journal.filename().string()), AllOf(HasSubstr("upload"), Not(HasSubstr("secret"))));
		EXPECT_THAT(utf8(report.Sentence + report.HowToGoOn), Not(HasSubstr("secret")));
		report = send(url, path, options);
		EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
		EXPECT_THAT(utf8(report.AskedAddress + report.ReachedAddress), Not(HasSubstr("me:")));
		for (const Lab::Exchange& each : fresh.log())
		{
			const bool isToUpload = each.request->method != "POST";
			EXPECT_EQ(each.request->header("X-Key").empty(), isToUpload && !tested.stays);
			EXPECT_EQ(each.request->header("Authorization").empty(),
				!tested.stays && (isToUpload || (tested.redirects && each.request->path() == "/files")))
				<< each.request->head;
		}
	}
}

TEST_F(Resumable, LearnsFromAnswersAndUsesWhatTheServerOffers)
{
	const Lab::Behaviour server = Lab::tus({.tells = true, .mostBytes = 60'000});
	origin.at("/files*", server);
	FCorvaneResumableOptions options = patient();
	EXPECT_EQ(send(origin.url("/files"), folder.write("file.bin", uploadedFile), options).Outcome, Outcome::Succeeded);
	EXPECT_EQ(count("PATCH", "Upload-Checksum", true), 3);
	const FCorvaneTransferReport tooMuch = send(origin.url("/files"), folder.write("large.bin", uploadedFile + uploadedFile), options);
	EXPECT_EQ(tooMuch.Outcome, Outcome::ServerError);
	EXPECT_THAT(utf8(tooMuch.Sentence), HasSubstr("60000 bytes at most"));
	EXPECT_EQ(utf8(tooMuch.Answer), "This is too much.");
}

TEST_F(Resumable, IsRefusedWithAReason)
{
	const std::string path = folder.write("file.bin", uploadedFile);
	struct Case
	{
		const char* name;
		std::function<void(FCorvaneResumableOptions&)> wish;
		Outcome outcome;
		const char* sentence;
		std::string file = {};
		std::string url = {};
	};
	const auto nothing = [](FCorvaneResumableOptions&) {};
	const LoopbackListener nobody(0);
	const Case cases[] = {
		{"no file", nothing, Outcome::CannotRead, "cannot be read", folder.path("missing")},
		{"a folder", nothing, Outcome::CannotRead, "cannot be read", folder.path()},
		{"no address", nothing, Outcome::Refused, "no http", path, "ftp://host/"},
		{"pieces of 2 GiB", [](auto& options) { options.PieceBytes = int64(1) << 31; }, Outcome::Refused, "below 2 GiB"},
		{"no attempt", [](auto& options) { options.Attempts = 0; }, Outcome::Refused, "at least one"},
		{"a header of its own", [](auto& options) { options.Headers.Add(TEXT("upload-offset"), TEXT("0")); }, Outcome::Refused,
			"upload's own"},
		{"a header with a line break", [](auto& options) { options.Headers.Add(TEXT("X-Key"), TEXT("secret\r\nX: y")); }, Outcome::Refused,
			"X-Key"},
		{"metadata with a blank", [](auto& options) { options.Metadata.Add(TEXT("a b"), TEXT("")); }, Outcome::Refused, "a b"},
		{"a hash of another kind", [](auto& options) { options.Hash = TEXT("crc:00"); }, Outcome::Refused, "hash"},
		{"another hash", [](auto& options) { options.Hash = TEXT("md5:00000000000000000000000000000000"); }, Outcome::WrongHash, "hash"},
		{"a sum of another kind", [](auto& options) { options.PieceChecksum = TEXT("crc"); }, Outcome::Refused, "sum"},
		{"notes cannot be kept", [&](auto& options) { options.JournalFolder = text(path); }, Outcome::CannotWrite, "cannot be made"},
	};
	origin.at("/files*", Lab::tus());
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.name);
		FCorvaneResumableOptions options = patient();
		tested.wish(options);
		const FCorvaneTransferReport report =
			send(tested.url.empty() ? origin.url("/files") : tested.url, tested.file.empty() ? path : tested.file, options);
		EXPECT_EQ(report.Outcome, tested.outcome) << utf8(report.Sentence);
		EXPECT_THAT(utf8(report.Sentence), AllOf(HasSubstr(tested.sentence), Not(HasSubstr("secret"))));
		EXPECT_TRUE(nothingIsNoted());
	}
	EXPECT_TRUE(origin.log().empty()) << "nothing was sent";
}
