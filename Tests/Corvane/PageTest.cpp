#include "CorvaneRequestCompleteObject.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "Runs/Run.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace
{
	const std::string confirmPage =
		R"(<span class="uc-name-size"><a href="/x">file</a> (2M)</span><a href="/uc?x;confirm=ab12&amp;id=1">Download anyway</a>)";

	class Pages : public ModuleFixture
	{
	protected:
		Pages()
		{
			UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteGoogleInfoDelegate.AddHandler(
				[this](void* const* a)
				{
					const auto textOf = [a](int index) { return utf8(*static_cast<const FString*>(a[index])); };
					infos.push_back(textOf(0) + " " + std::to_string(*static_cast<const int64*>(a[1])) + " " +
									std::to_string(*static_cast<const int32*>(a[2])) + " " + textOf(3) + " " + textOf(4));
				});
		}

		/** A Drive file of this ID, whose request has the ID "id". */
		TArray<FhttpRequest> drive(const std::string& base, const char* downloadID = "file", int64 size = 0)
		{
			UCorvaneBPLibrary::setGoogleDriveBase(text(base));
			const int32 code = UCorvaneBPLibrary::CreateHttpRequestGoogleDrive({}, downloadID, "id", size, requests, requestID);
			EXPECT_EQ(code, requests.IsEmpty() ? 400 : 0);
			return requests;
		}

		TArray<FhttpRequest> driveInfo(const std::string& base, const char* downloadID = "file")
		{
			UCorvaneBPLibrary::setGoogleDriveBase(text(base));
			const int32 code = UCorvaneBPLibrary::CreateHttpRequestGoogleDriveFileInfo({}, downloadID, "id", requests, requestID);
			EXPECT_EQ(code, requests.IsEmpty() ? 400 : 0);
			return requests;
		}

		TArray<FhttpRequest> filePage(const std::string& url)
		{
			const int32 code = UCorvaneBPLibrary::CreateHttpRequestAnonfiles({}, text(url), "id", requests, requestID);
			EXPECT_EQ(code, requests.IsEmpty() ? 400 : 0);
			return requests;
		}

		std::vector<std::string> targets() const
		{
			std::vector<std::string> result;
			for (const Lab::Exchange& exchange : origin.log())
			{
				result.push_back(exchange.request->target);
			}
			return result;
		}

		Lab::Origin origin;
		TArray<FhttpRequest> requests;
		FString requestID;
		std::vector<std::string> infos; // file name, size, code, download ID and request ID
		LogCapture log;
	};

	/** The confirmation page first, the file to whoever confirms. */
	Lab::Behaviour confirming(const std::string& file)
	{
		return [file](const Lab::Request& request) { return request.parameter("confirm") == "ab12" ? file : confirmPage; };
	}

	std::string link(const std::string& address)
	{
		return "<a id=\"download-url\" href=\"" + address + "\"><img></a>";
	}
} // namespace

TEST_F(Pages, ADriveFileIsFetchedBehindItsConfirmation)
{
	origin.at("/uc", confirming("the file"));
	EXPECT_EQ(run(drive(origin.url() /* ends with a slash */, "a b")).statusCode, 500) << "a blank cannot be sent";
	for (int round = 0; round < 50; ++round)
	{
		downloads.clear();
		const Completion result = run(drive(origin.url(), "file", 8));
		EXPECT_EQ(result.requestID + std::to_string(result.statusCode) + result.byteData, "id200the file");
		ASSERT_FALSE(downloads.empty()) << "a short file is reported, too; round " << round;
		EXPECT_EQ(downloads.back().percentDownload, 100);
	}
	EXPECT_EQ(targets()[0], "/uc?id=file&export=download");
	EXPECT_EQ(targets()[1], "/uc?id=file&export=download&confirm=ab12");
}

TEST_F(Pages, ADriveFileWithoutConfirmationIsTheFirstAnswer)
{
	for (const std::string body : {"small file", "x;confirm=token-without-end", ""})
	{
		Lab::Origin server;
		server.at("*", body);
		const Completion result = run(drive(server.url()));
		EXPECT_EQ(result.statusCode, 200);
		EXPECT_EQ(result.byteData, body);
		EXPECT_EQ(server.log().size(), 1u);
	}
}

TEST_F(Pages, ProgressOfADriveFileIsThatOfTheFileAgainstItsKnownSize)
{
	for (const auto& [given, expected] : {std::pair(4000, 4000.0f), {0, 2097152.0f}}) // given, or as the page shows it
	{
		downloads.clear();
		Lab::Gate half;
		origin.at("/uc", confirming(std::string(2000, 'x')), Lab::hold(half, {.byte = 1000}));
		execute(drive(origin.url(), "file", given));
		ASSERT_TRUE(until([this] { return !downloads.empty(); }));
		EXPECT_FLOAT_EQ(downloads[0].size, expected * 9.536743e-7f);
		EXPECT_FLOAT_EQ(downloads[0].percentDownload, 100 * (1000 / expected));
		half.open();
		drain();
	}
}

TEST_F(Pages, FileInformationOrTheCodeForAPageThatCannotBeRead)
{
	std::string fields = "itemJson:0,\"level.pak\"";
	for (int field = 2; field < 27; ++field)
	{
		fields += ",0";
	}
	fields += ",\"77\"]";
	const std::pair<Lab::Behaviour, const char*> cases[] = {{fields, "level.pak 77 200 file id"},
		{{{fields, Lab::status({.code = 404})}}, "level.pak 77 404 file id"}, {"a page", " 0 452 file id"},
		{Lab::status({.code = 404, .text = "not found"}), " 0 452 file id"}, {Lab::drop(), " 0 500 file id"}};
	for (const auto& [page, info] : cases)
	{
		infos.clear();
		Lab::Origin server;
		server.at("/file/d/file/view", page);
		execute(driveInfo(server.url()));
		const TWeakPtr<IHttpRequest> sent = requests[0].requestCompleteObject()->run().request();
		drain();
		EXPECT_THAT(infos, ElementsAre(info));
		ASSERT_TRUE(waitFor([&] { return !sent.IsValid(); })) << "no later event lets go of it";
		EXPECT_TRUE(completions.empty()) << "the other event stays silent";
		EXPECT_EQ(server.log().size(), 1u);
	}
}

TEST_F(Pages, AreRefusedWithoutAnAddress)
{
	EXPECT_TRUE(drive("http://127.0.0.1", "").IsEmpty() && driveInfo("http://127.0.0.1", "").IsEmpty());
	EXPECT_THAT(infos, ElementsAre(" 0 400  id", " 0 400  id")) << "inside the call, and as file information";
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "No downloadId in CreateHttpRequestGoogleDrive."), 1);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "No downloadId in CreateHttpRequestGoogleDriveFileInfo."), 1);
	EXPECT_TRUE(filePage("ab").IsEmpty());
	ASSERT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].statusCode, 400);
}

TEST_F(Pages, AFilePageLeadsToItsFileOrToOneClearFailure)
{
	Lab::Origin file;
	file.at("/f", "the file");
	const std::string tooLarge = std::string(4 << 20, '<') + link(file.url("/f"));
	const std::tuple<const char*, std::string, int32, std::string> cases[] = {
		{"a link", link(file.url("/f")), 200, "the file"},
		{"a page of megabytes", std::string(3 << 20, '<') + link(file.url("/f")), 200, "the file"},
		{"what is too large for a page", tooLarge, 200, tooLarge},
		{"bytes that are no text", "\xFF\xFE\x80" + link(file.url("/f")), 200, "the file"},
		{"a link to the disk", link("file:///etc/hostname"), 500, ""},
		{"a relative link", link("/file.zip"), 500, ""},
		{"no markup", "a page, with, many, commas", 500, ""},
		{"an empty link", link(""), 500, ""},
		{"two letters", "hi", 500, ""},
		{"no page", "", 200, ""},
	};
	for (const auto& [name, content, code, body] : cases)
	{
		Lab::Origin page;
		page.at("/", content);
		const Completion result = run(filePage(page.url()));
		EXPECT_EQ(result.requestID + std::to_string(result.statusCode), "id" + std::to_string(code)) << name;
		EXPECT_TRUE(result.byteData == body) << name;
		EXPECT_EQ(page.log().size(), 1u) << name;
	}
}

TEST_F(Pages, ALinkToThePageItselfIsFollowedOnce)
{
	const std::string page = link(origin.url("/again"));
	origin.at("*", page);
	EXPECT_EQ(run(filePage(origin.url())).byteData, page);
	EXPECT_EQ(origin.log().size(), 2u);
}

TEST_F(Pages, ACancelBetweenTheStepsIsKeptForThisRunOnly)
{
	for (int round = 0; round < 20; ++round)
	{
		completions.clear();
		Lab::Gate page;
		Lab::Origin server;
		server.at("/uc", confirming("the file"), Lab::hold(page, {.byte = 1}));
		execute(drive(server.url()));
		ASSERT_TRUE(until([&] { return !server.log().empty(); }));
		UCorvaneBPLibrary::cancelRequest("id");
		page.open();
		drain();
		ASSERT_EQ(completions.size(), 1u);
		EXPECT_EQ(completions[0].statusCode, 500);
		EXPECT_EQ(server.log().size(), 1u) << "the second step was not started";
		EXPECT_EQ(run(requests).byteData, "the file");
	}
}

TEST_F(Pages, ARecordMayBeExecutedAgainFromItsOwnHandler)
{
	origin.at("/uc", "small file");
	drive(origin.url());
	int left = 50;
	UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate.AddHandler(
		[&](void* const*)
		{
			if (left-- > 0)
			{
				execute(requests);
			}
		});
	execute(requests);
	EXPECT_TRUE(waitForCompletions(51));
	drain();
	EXPECT_EQ(completions.size(), 51u);
}
