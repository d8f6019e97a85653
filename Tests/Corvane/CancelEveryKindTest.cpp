#include "DownloadFixture.h"
#include "LogCapture.h"
#include "Runs/RunList.h"

namespace
{
	/** A kind of request, and how many answers it gets before it has to wait for ever. */
	struct Kind
	{
		const char* name;
		int answers;
		std::function<TArray<FhttpRequest>(const std::string& url)> build;
	};

	class CancelEveryKind : public DownloadFixture
	{
	protected:
		std::vector<Kind> kinds()
		{
			const auto drive = [](const std::string& url)
			{
				UCorvaneBPLibrary::setGoogleDriveBase(text(url));
				TArray<FhttpRequest> requests;
				FString id;
				UCorvaneBPLibrary::CreateHttpRequestGoogleDrive({}, "file", "id", 0, requests, id);
				return requests;
			};
			const auto page = [](const std::string& url)
			{
				TArray<FhttpRequest> requests;
				FString id;
				UCorvaneBPLibrary::CreateHttpRequestAnonfiles({}, text(url), "id", requests, id);
				return requests;
			};
			const auto stepped = [this](const std::string& url) {
				return build({url, DownloadKind::Stepped, Action::E_OVERWRITE, "", "id", {}, 1000});
			};
			const auto whole = [this](const std::string& url) { return build({url, DownloadKind::Whole, Action::E_OVERWRITE, "", "id"}); };
			return {{"a GET", 0, [this](const std::string& url) { return get(url, {}, "id"); }}, {"a download", 0, whole},
				{"a probe", 0, stepped}, {"a step", 1, stepped}, {"a later step", 2, stepped}, {"a Drive page", 0, drive},
				{"a Drive file", 1, drive}, {"a file page", 0, page}, {"a file behind its page", 1, page}};
		}

		/** Serves so many answers in order, and to the next request none. */
		struct Stuck
		{
			explicit Stuck(const Kind& inKind)
				: kind(inKind)
			{
			}
			const Kind& kind;
			const std::string content = patternedBytes(5000);
			Gate never, reached;
			RangeOrigin origin{[this](Connection& connection, const RangeRequest& request)
				{
					if (request.number >= kind.answers)
					{
						reached.open();
						connection.waitFor(never);
					}
					const bool bRange = !request.range.empty();
					const std::string page = ";confirm=1&amp; <a id=\"download-url\" href=\"http://" + authority() + "/\"><img></a>";
					connection.send(bRange ? rangedAnswer(content, request) : answer(200, page));
				}};
			std::string authority() const { return origin.url("").substr(7); }
		};

		LogCapture log;
	};
} // namespace

TEST_F(CancelEveryKind, ReachesARequestThatWaitsForItsFirstByte)
{
	for (const Kind& kind : kinds())
	{
		completions.clear();
		Stuck server(kind);
		execute(kind.build(server.origin.url()));
		ASSERT_TRUE(loop.WaitFor([&] { return server.reached.isOpen(); }, patienceSeconds)) << kind.name;
		UCorvaneBPLibrary::cancelRequest("ID");
		drain();
		ASSERT_EQ(completions.size(), 1u) << kind.name;
		EXPECT_EQ(completions[0].statusCode, 500) << kind.name;
		EXPECT_EQ(completions[0].dataString, "No Response") << kind.name;
	}
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "Request has been canceled. id"), static_cast<int>(kinds().size()));
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error), 0) << "nobody else is to blame";
}

TEST_F(CancelEveryKind, LeavesANewStartUnderTheSameIdAlone)
{
	// Whoever asks for a page finds a link back to it, and the page itself is the file behind that.
	std::string page;
	RangeOrigin honest([&page](Connection& connection, const RangeRequest& request)
		{ connection.send(request.range.empty() ? answer(200, page) : rangedAnswer("new file", request)); });
	page = "<a id=\"download-url\" href=\"" + honest.url("/") + "\"><img></a>";
	for (const Kind& kind : kinds())
	{
		completions.clear();
		Stuck server(kind);
		execute(kind.build(server.origin.url()));
		ASSERT_TRUE(loop.WaitFor([&] { return server.reached.isOpen(); }, patienceSeconds)) << kind.name;
		UCorvaneBPLibrary::cancelRequest("id");
		execute(kind.build(honest.url("/")));
		drain();
		ASSERT_EQ(completions.size(), 2u) << kind.name;
		const bool bOldFirst = completions[0].statusCode == 500;
		EXPECT_EQ(completions[bOldFirst ? 0 : 1].statusCode, 500) << kind.name;
		const int32 code = completions[bOldFirst ? 1 : 0].statusCode;
		EXPECT_TRUE(code == 200 || code == 206) << kind.name << ": " << code;
	}
}

TEST_F(CancelEveryKind, BetweenTwoStepsIsNotLostEvenWithoutATick)
{
	FCorvRunList& running = UCorvaneBPLibrary::getCorvaneTarget()->runList();
	for (const bool startsAgain : {false, true})
	{
		for (const Kind& kind : kinds())
		{
			if (kind.answers != 1)
			{
				continue;
			}
			completions.clear();
			Stuck server(kind);
			execute(kind.build(server.origin.url()));
			ASSERT_TRUE(waitFor([&] { return !running.hasRuns(); })) << kind.name; // the first step is over, and the second is not begun
			UCorvaneBPLibrary::cancelRequest("id");
			if (startsAgain)
			{
				execute(get("http://nothing.invalid/", {}, "id")); // which takes the mark of the ID away
			}
			drain();
			EXPECT_EQ(completions.size(), startsAgain ? 2u : 1u) << kind.name;
			EXPECT_FALSE(server.reached.isOpen()) << kind.name << " went on";
		}
	}
}
