#include "CorvaneBPLibrary.h"
#include "CorvaneDownloadFile.h"
#include "Drive/DriveRoute.h"
#include "RandomBytes.h"
#include "TransferFixture.h"

using Outcome = ECorvaneTransferOutcome;

namespace
{
	const std::string driveFile = randomBytes(300'000);

	std::string formTo(const std::string& action)
	{
		return "<form action=\"" + action + "\" method=\"get\"><input type=\"hidden\" name=\"id\" value=\"one\">" +
			   "<input type=\"hidden\" name=\"confirm\" value=\"t\"></form>";
	}

	Lab::Behaviour htmlPage(const std::string& html, int code = 200)
	{
		return std::vector{Lab::text(html, "text/html; charset=utf-8"), Lab::status({.code = code})};
	}

	class DriveFile : public TransferFixture
	{
	protected:
		UCorvaneDownloadFile* start(const Lab::Origin& server, FCorvaneDownloadOptions options = {}, const std::string& id = "one")
		{
			UCorvaneBPLibrary::setGoogleDriveBase(text(server.url("")));
			options.FirstWaitSeconds = 0.001;
			return UCorvaneDownloadFile::StartDriveFile(text(id), text(folder.path("file.bin")), options, note());
		}
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
			const auto validator = tagged ? Lab::Validator::Strong : Lab::Validator::None;
			const Lab::Behaviour file = Lab::file(driveFile, {.validator = validator, .tellsTime = false});
			const Lab::Behaviour noFile = later == Later::PlaceIsGone ? Lab::status({.code = 403, .text = "gone"}) : htmlPage("Hello");
			std::atomic<int> pages{0}, files{0};
			Lab::Origin server;
			server.at(
				"/uc", [&](const Lab::Request&) { return htmlPage(std::string(1, '\0') + formTo("/download" + std::to_string(pages++))); });
			server.at("/download*",
				[&](const Lab::Request&)
				{
					const int number = files++;
					return number == 0                                ? Lab::Behaviour({file, Lab::dropAfter(200'000)})
						   : number == 1 && later != Later::SamePlace ? noFile
																	  : file;
				});
			start(server);
			const FCorvaneTransferReport report = finish();
			EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
			EXPECT_TRUE(folder.read("file.bin") == driveFile);
			EXPECT_EQ(report.TransferredBytes, static_cast<int64>(driveFile.size()));
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
		const std::vector file{Lab::file(driveFile), Lab::onlyFirst(1, Lab::stall({.at = {.byte = 200'000}}))};
		Lab::Origin server;
		server.at("/uc", behindPage ? htmlPage(formTo("/download")) : file).at("/download", Lab::Behaviour(file));
		UCorvaneDownloadFile* const first = start(server);
		ASSERT_TRUE(loop.WaitFor([&] { return first->GetReport().TransferredBytes > 190'000; }, patienceSeconds));
		first->Cancel();
		FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, Outcome::Cancelled);
		EXPECT_GT(report.BytesLeft, 190'000);

		start(server);
		report = finish();
		EXPECT_EQ(report.Outcome, Outcome::Succeeded) << utf8(report.Sentence);
		EXPECT_GT(report.TakenOverBytes, 190'000);
		EXPECT_EQ(report.TakenOverBytes + report.TransferredBytes, static_cast<int64>(driveFile.size()));
		EXPECT_TRUE(folder.read("file.bin") == driveFile);
		for (const Lab::Exchange& each : server.log())
		{
			EXPECT_TRUE(!behindPage || each.request->path() != "/uc" || each.request->header("Range").empty()) << "a page has no parts";
		}
		expectNothingBeside();
		std::filesystem::remove(folder.path("file.bin"));
	}
}

TEST_F(DriveFile, StopsWhileThePageIsOnItsWay)
{
	Lab::Origin server;
	server.at("/uc", htmlPage(formTo("/download")), Lab::stall({.at = {.byte = 50}}));
	UCorvaneDownloadFile* const transfer = start(server);
	ASSERT_TRUE(loop.WaitFor([&] { return server.requests() == 1; }, patienceSeconds));
	transfer->Pause();
	ASSERT_TRUE(loop.WaitFor([&] { return transfer->IsPaused(); }, patienceSeconds));
	transfer->Continue();
	ASSERT_TRUE(loop.WaitFor([&] { return server.requests() == 2; }, patienceSeconds));
	transfer->Cancel();
	EXPECT_EQ(finish().Outcome, Outcome::Cancelled);
	expectNothingBeside();
}

TEST(Route, OfATryThatIsCancelledAlreadyTellsItsEndAtOnce)
{
	struct Ears : FCorvaneExchangeReceiver
	{
		bool OnAnswer(const FCorvaneAnswer&) override { return true; }
		bool OnBytes(const uint8*, int64) override { return true; }
		void OnEnd(const FCorvaneExchangeResult& Result) override { Ends.push_back(Result.End); }
		std::vector<ECorvaneExchangeEnd> Ends;
	};
	for (const TSharedRef<FCorvaneRoute>& Route : {TSharedRef<FCorvaneRoute>(MakeShared<FCorvaneDriveRoute>(TEXT("one"))),
			 TSharedRef<FCorvaneRoute>(MakeShared<FCorvaneStraightRoute>())})
	{
		const TSharedRef<Ears> Told = MakeShared<Ears>();
		Route->Prepare();
		Route->Cancel();
		Route->Start(FCorvaneExchangeRequest(), Told);
		EXPECT_EQ(Told->Ends, std::vector{ECorvaneExchangeEnd::Cancelled});
	}
}

TEST_F(DriveFile, IsNeverAPage)
{
	struct Case
	{
		const char* name;
		Lab::Behaviour first; // of the address that the ID leads to
		Lab::Behaviour file; // of the one that a form names
		Outcome outcome;
		int attempts = 1;
		std::string id = "one";
	};
	const Lab::Behaviour form = htmlPage(formTo("/download"));
	const Lab::Behaviour pageAsFile({htmlPage(driveFile), Lab::headers({{"Content-Disposition", "Attachment; filename=a.html"}})});
	const std::string quota = "<title>Quota exceeded</title>";
	const Case cases[] = {
		{"no ID", form, "", Outcome::Refused, 0, ""},
		{"a link for an ID", form, "", Outcome::Refused, 0, "d/one/view?usp=sharing"},
		{"a file that is a page", pageAsFile, "", Outcome::Succeeded},
		{"the same behind a form", form, pageAsFile, Outcome::Succeeded},
		{"a file of no type", Lab::raw("HTTP/1.1 200 OK\r\nContent-Length: 300000\r\n\r\n" + driveFile), "", Outcome::Succeeded},
		{"quota at once", htmlPage(quota), "", Outcome::QuotaReached},
		{"quota behind the form", form, htmlPage(quota, 403), Outcome::QuotaReached},
		{"a page to sign in", htmlPage("<title>Sign in</title>"), "", Outcome::NotPermitted},
		{"no permission, without a page", Lab::status({.code = 401}), "", Outcome::NotPermitted},
		{"no permission behind the form", form, Lab::status({.code = 403, .text = "x"}), Outcome::NotPermitted},
		{"no such file", htmlPage("<title>Not found</title>", 404), "", Outcome::ServerError},
		{"another page", htmlPage("<p>Welcome"), "", Outcome::ServerError},
		{"another page behind the form", form, htmlPage("<p>Welcome"), Outcome::ServerError},
		{"forms in a circle", form, form, Outcome::ServerError},
		{"a page that does not end", htmlPage(std::string(5'000'000, 'x')), "", Outcome::ServerError},
		{"a page that breaks off", {{form, Lab::drop({.at = {.share = 0.9}})}}, "", Outcome::Dropped, 2},
		{"a server that cannot now", htmlPage("<title>Sorry</title>", 503), "", Outcome::ServerError, 2},
	};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		folder.write("file.bin", "old");
		Lab::Origin server;
		server.at("/uc", each.first).at("/download", each.file);
		FCorvaneDownloadOptions options;
		options.Attempts = 2;
		start(server, options, each.id);
		const FCorvaneTransferReport report = finish();
		EXPECT_EQ(report.Outcome, each.outcome) << utf8(report.Sentence);
		EXPECT_FALSE(report.Sentence.IsEmpty());
		EXPECT_TRUE(folder.read("file.bin") == (each.outcome == Outcome::Succeeded ? driveFile : "old"));
		expectNothingBeside();
		EXPECT_EQ(report.Attempts, each.attempts);
	}
}

TEST_F(DriveFile, TellsSecretsToThePagesOwnHostOnly)
{
	const Lab::Behaviour cookies(
		[](const Lab::Request&, Lab::Plan& plan)
		{
			plan.headers.push_back({"Set-Cookie", "download_warning_1=ab; Path=/; Secure"});
			plan.headers.push_back({"set-cookie", "NID=5"});
		});
	Lab::Origin other;
	other.at("/download", Lab::file(driveFile));
	for (const bool isElsewhere : {false, true})
	{
		Lab::Origin server;
		server.at("/uc", htmlPage(formTo(isElsewhere ? other.url("/download") : "/download")), cookies)
			.at("/download", Lab::file(driveFile));
		FCorvaneDownloadOptions options;
		options.Headers.Add(text("Authorization"), text("Bearer key"));
		options.Headers.Add(text("Cookie"), text("mine=1"));
		options.Headers.Add(text("X-Own"), text("yes"));
		start(server, options);
		ASSERT_EQ(finish().Outcome, Outcome::Succeeded);
		const Lab::Request& first = *server.log().front().request;
		EXPECT_EQ(first.target, "/uc?id=one&export=download");
		EXPECT_EQ(first.header("Cookie"), "mine=1");
		const Lab::Request& file = *(isElsewhere ? other : server).log().back().request;
		EXPECT_EQ(file.target, "/download?id=one&confirm=t");
		EXPECT_EQ(file.header("Cookie"), isElsewhere ? "" : "mine=1; download_warning_1=ab; NID=5");
		EXPECT_EQ(file.header("Authorization"), isElsewhere ? "" : "Bearer key");
		EXPECT_EQ(file.header("X-Own"), "yes");
	}
}
