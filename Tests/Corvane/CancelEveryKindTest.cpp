#include "Calls.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "Runs/RunList.h"
#include "TempDir.h"

#include <ranges>

namespace
{
	/** A kind of request, and how many answers it gets before it has to wait for ever. */
	struct Kind
	{
		const char* name;
		size_t answers;
		const char* builder;
	};

	const Kind kinds[] = {{"a GET", 0, "CreateHttpRequestGET"}, {"a download", 0, "CreateHttpRequestGETDownload"},
		{"a probe", 0, "CreateHttpRequestGETLowRamDownload"}, {"a step", 1, "CreateHttpRequestGETLowRamDownload"},
		{"a later step", 2, "CreateHttpRequestGETLowRamDownload"}, {"a Drive page", 0, "CreateHttpRequestGoogleDrive"},
		{"a Drive file", 1, "CreateHttpRequestGoogleDrive"}, {"a file page", 0, "CreateHttpRequestAnonfiles"},
		{"a file behind its page", 1, "CreateHttpRequestAnonfiles"}};

	/** Serves so many answers in order, and to the next request none; every page leads back to it. */
	class Origin : public Lab::Origin
	{
	public:
		explicit Origin(size_t answers)
			: last(answers)
		{
			const std::string page = ";confirm=1&amp; <a id=\"download-url\" href=\"" + url() + "\"><img></a>";
			at("*",
				[=](const Lab::Request& request)
				{
					const Lab::Behaviour whole = request.header("Range").empty() ? Lab::Behaviour(page) : Lab::file("some bytes");
					return request.number > answers ? Lab::stall() : whole;
				});
		}
		/** Whether a request waits for ever. */
		bool isReached() const { return log().size() > last; }

	private:
		const size_t last;
	};

	class CancelEveryKind : public ModuleFixture
	{
	protected:
		void start(const Kind& kind, const Origin& server)
		{
			UCorvaneBPLibrary::setGoogleDriveBase(text(server.url("")));
			execute(build(kind.builder, {.url = text(server.url()),
											.downloadID = "file",
											.filePathWithFileName = text(dir.path("target.bin")),
											.optionalRequestID = "id"}));
		}

		LogCapture log;
		TempDir dir;
	};
} // namespace

TEST_F(CancelEveryKind, ReachesARequestThatWaitsForItsFirstByteAndNoNewStartUnderItsId)
{
	const Origin honest(100);
	for (const bool bStartsAgain : {false, true})
	{
		for (const Kind& kind : kinds)
		{
			SCOPED_TRACE(kind.name);
			Origin stuck(kind.answers);
			start(kind, stuck);
			ASSERT_TRUE(until([&] { return stuck.isReached(); }));
			UCorvaneBPLibrary::cancelRequest("ID");
			if (bStartsAgain)
			{
				start(kind, honest);
			}
			drain();
			const std::vector<std::string> all = takeResults();
			ASSERT_EQ(all.size(), bStartsAgain ? 2u : 1u);
			EXPECT_EQ(all.back(), "id: 500 No Response");
			EXPECT_TRUE(!bStartsAgain || all[0].starts_with("id: 20")) << all[0];
		}
		const int errors = log.count("LogTemp", ELogVerbosity::Error);
		EXPECT_TRUE(bStartsAgain || errors == 0) << "nobody else is to blame";
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "Request has been canceled. id"),
			static_cast<int>(std::size(kinds)) * (bStartsAgain ? 2 : 1));
	}
}

TEST_F(CancelEveryKind, BetweenTwoStepsIsNotLostEvenWithoutATick)
{
	FCorvRunList& running = library().runList();
	for (const bool bStartsAgain : {false, true})
	{
		for (const Kind& kind : kinds | std::views::filter([](const Kind& each) { return each.answers == 1; }))
		{
			Origin stuck(kind.answers);
			start(kind, stuck);
			ASSERT_TRUE(waitFor([&] { return !running.hasRuns(); })) << kind.name; // the first step is over, and the second is not begun
			UCorvaneBPLibrary::cancelRequest("id");
			if (bStartsAgain)
			{
				execute(get("http://nothing.invalid/", {}, "id")); // which takes the mark of the ID away
			}
			drain();
			EXPECT_EQ(takeResults().size(), bStartsAgain ? 2u : 1u) << kind.name;
			EXPECT_FALSE(stuck.isReached()) << kind.name << " went on";
		}
	}
}
