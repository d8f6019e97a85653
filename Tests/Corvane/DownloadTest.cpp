#include "DownloadFixture.h"
#include "FileKit.h"
#include "Host/Directories.h"
#include "Runs/RunList.h"

using testing::ElementsAre;

namespace
{
	const std::string content = randomBytes(5000);
	const std::string prefix = content.substr(0, 1000);
	const std::string foreign(1000, 'f');
	const std::optional<std::string> absent;

	Lab::Behaviour page(int code)
	{
		return Lab::status({.code = code, .text = "a page of the server"});
	}

	class Download : public DownloadFixture
	{
	protected:
		Download()
			: DownloadFixture(impatient(0.5))
		{
		}

		std::vector<Fault> faults() const;
	};

	std::vector<Download::Fault> Download::faults() const
	{
		const auto overwrite = Action::E_OVERWRITE;
		const auto refuse = Action::E_NOT_OVERWRITE;
		const std::string tail = content.substr(1000);
		const Lab::Behaviour honest = Lab::file(content);
		const Lab::Behaviour whole = Lab::file(content, {.ranges = Lab::Ranges::Ignored});
		const Lab::Behaviour empty = Lab::file("", {.ranges = Lab::Ranges::Ignored});
		const Lab::Behaviour packed = Lab::headers({{"Content-Encoding", "gzip"}});
		const Lab::Behaviour removeDirectory = [=, this](const Lab::Request&)
		{
			std::filesystem::remove_all(dir.path());
			return honest;
		};
		return {
			{"honours ranges", honest, absent, 200, content},
			{"honours ranges", honest, prefix, 206, content},
			{"honours ranges", honest, foreign, 200, content, overwrite},
			{"honours ranges", honest, foreign, 400, foreign, refuse},
			{"honours ranges", honest, absent, 200, content, refuse},
			{"has no more than is on disk", honest, content, 416, content},
			{"ignores the range", whole, prefix, 200, content},
			{"sends another start", part("bytes 0-4999/5000", content), prefix, 500, prefix},
			{"sends a later start", Lab::file(content, {.ranges = Lab::Ranges::WrongStart}), prefix, 500, prefix},
			{"sends a part unasked", part("bytes 1000-4999/5000", tail), absent, 500, absent},
			{"tells no range", {{tail, Lab::status({.code = 206})}}, prefix, 500, prefix},
			{"tells a total that is on disk", part("bytes 0-999/1000", prefix), prefix, 206, prefix},
			{"tells a total below what is on disk", part("bytes 0-99/100", content.substr(0, 100)), prefix, 500, prefix},
			{"sends less than the rest", part("bytes 1000-2999/5000", content.substr(1000, 2000)), prefix, 500, content.substr(0, 3000)},
			{"sends less than its range", part("bytes 1000-4999/*", content.substr(1000, 2000)), prefix, 500, content.substr(0, 3000)},
			{"sends a beginning unasked", part("bytes 0-999/5000", prefix), absent, 500, prefix},
			{"tells too small a total", part("bytes 1000-4999/4000", tail), prefix, 500, prefix},
			{"knows no total", Lab::file(content, {.ranges = Lab::Ranges::NoTotal}), prefix, 206, content},
			{"sends more than its range", {{part("bytes 1000-1999/5000", tail), Lab::chunked()}}, prefix, 500, prefix},
			{"sends more than announced", {{honest, Lab::length({.says = 4000})}}, absent, 200, content.substr(0, 4000)},
			{"is satisfied", Lab::file(prefix), prefix, 416, prefix},
			{"has lost the file's end", page(416), prefix, 416, prefix},
			{"forbids", page(403), absent, 403, absent},
			{"does not find", page(404), prefix, 404, prefix},
			{"fails", page(500), prefix, 500, prefix},
			{"is busy", page(503), absent, 503, absent},
			{"sends chunks", {{honest, Lab::chunked()}}, absent, 200, content},
			{"says that it packs the body", {{honest, packed}}, absent, 500, absent},
			{"has an empty file", empty, absent, 200, absent},
			{"sends an empty part", part("bytes 1000-4999/5000", ""), prefix, 500, prefix},
			{"sends an empty part unasked", part("bytes 0-4999/5000", ""), absent, 500, absent},
			{"has become empty", empty, prefix, 500, prefix},
			{"sends more than a part unasked", part("bytes 0-999/5000", content), absent, 500, absent},
			{"has an empty file", empty, foreign, 200, absent, overwrite},
			{"redirects", {{"a page", Lab::redirect({.to = "/target"})}}, prefix, 206, content},
			{"breaks off", {{honest, Lab::dropAfter(2000)}}, absent, 500, content.substr(0, 2000)},
			{"breaks off chunks", {{honest, Lab::chunked({.fault = Lab::ChunkFault::NoEnd})}}, absent, 500, content},
			{"breaks off the rest", {{honest, Lab::dropAfter(1000)}}, prefix, 500, content.substr(0, 2000)},
			{"breaks off a wrong part", {{part("bytes 0-4999/5000", content), Lab::dropAfter(2000)}}, prefix, 500, prefix},
			{"breaks off the whole file after a part", {{whole, Lab::dropAfter(2000)}}, prefix, 500, prefix},
			{"breaks off before the body", {{honest, Lab::dropAfter(0)}}, absent, 500, absent},
			{"falls silent", {{honest, Lab::stall({.at = {.byte = 1000}})}}, absent, 500, content.substr(0, 1000)},
			{"removes the directory", removeDirectory, absent, 200, content},
		};
	}
} // namespace

TEST_F(Download, LeavesTheWholeFileATruePrefixOrWhatWasThere)
{
	for (const Fault& fault : faults())
	{
		const LogCapture log;
		expectOutcome(fault, DownloadKind::Whole);
		const bool bTold = fault.statusCode > 400;
		const bool bIsWhole = fault.statusCode == 416 && std::string(fault.name) != "has lost the file's end";
		const auto count = [&](const char* words)
		{ return log.count("LogTemp", ELogVerbosity::Error, "File Download: " + targetPath + words); };
		EXPECT_EQ(count(" is not complete: "), bTold && !bIsWhole) << fault.name;
		EXPECT_EQ(count(" is left as it is: "), bIsWhole) << fault.name;
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Request my-id, http://127.0.0.1:"), bTold) << fault.name;
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "secret"), 0);
	}
}

TEST_F(Download, TellsTextAndLinesThatCameAndCountsWhatIsOnDisk)
{
	setTarget("begin,");
	origin.at("/file", Lab::file("begin,one\r\n\r\ntwo"));
	const Completion result = fetch({origin.url("/file")});
	EXPECT_EQ(result.dataString, "one\r\n\r\ntwo");
	EXPECT_THAT(result.dataArray, ElementsAre("one", "two"));
	EXPECT_THAT(result.header, testing::Contains("Content-Length: 10"));
	ASSERT_FALSE(downloads.empty());
	EXPECT_FLOAT_EQ(downloads.back().size, 16 * 9.536743e-7f);
	EXPECT_FLOAT_EQ(downloads.back().megaBytesReceived, 16 * 9.536743e-7f);
	EXPECT_FLOAT_EQ(downloads.back().percentDownload, 100);
}

TEST_F(Download, IntoTheGameIsReadFromTheProjectsFolder)
{
	HostDirectories::Set(dir.path(), "/elsewhere");
	origin.at("/file", Lab::file(content));
	for (const DownloadKind kind : bothDownloadKinds)
	{
		setTarget(foreign);
		fetch({origin.url("/file"), kind, Action::E_OVERWRITE, "target.bin", "", {}, 9999, EHTTPCorvFileUpload::E_gd});
		EXPECT_TRUE(target() == content);
	}
}

TEST_F(Download, OfAPartOfOnesOwnChoiceIsWrittenWhereItFollows)
{
	const std::string hundred = content.substr(100, 100);
	const std::pair<Target, std::string> cases[] = {
		{absent, hundred}, {"", hundred}, {content.substr(0, 100), content.substr(0, 200)}, {prefix, prefix}};
	for (const auto& [before, after] : cases)
	{
		for (const size_t missing : {0u, 50u})
		{
			const LogCapture log;
			origin.at("/file", Lab::file(content), Lab::dropAfter(100 - missing));
			setTarget(before);
			const TArray<FhttpRequest> requests =
				build({origin.url("/file"), DownloadKind::Whole, Action::E_OVERWRITE, "", "", {{"Range", "bytes=100-199"}}});
			setTarget(before); // as if it had come in between: only then is it there and no resume
			const bool bFollows = before != after;
			EXPECT_EQ(run(requests).statusCode, missing == 0 && bFollows ? 206 : 500);
			const std::string kept = after.substr(0, after.size() - (bFollows ? missing : 0));
			EXPECT_EQ(describe(target()), describe(kept));
		}
	}
}

TEST_F(Download, ThatIsResumedNeverMixesTwoVersions)
{
	const std::string second = randomBytes(6000, 2), start = content.substr(0, 2000);
	const Lab::FileChange change{Lab::bytesContent(second), 1};
	for (const bool bTagged : {true, false})
	{
		const Lab::FileOptions told{.validator = bTagged ? Lab::Validator::Strong : Lab::Validator::None, .tellsTime = !bTagged};
		Lab::FileOptions toldOfSecond = told;
		toldOfSecond.change = change;
		origin.at("/first", Lab::file(content, told), Lab::dropAfter(2000));
		origin.at("/same", Lab::file(content, told)).at("/changed", Lab::file(content, toldOfSecond));
		for (const DownloadKind kind : bothDownloadKinds)
		{
			const LogCapture log;
			const bool bWhole = kind == DownloadKind::Whole;
			for (const auto& [next, code, result, bFullDisk] : {std::tuple("/changed", bWhole ? 200 : 500, bWhole ? second : start, false),
					 {"/same", 206, content, false}, {"/changed", bWhole ? 200 : 500, bWhole ? second : start, true}})
			{
				setTarget(absent);
				{
					const FileSizeLimit limit(bFullDisk ? start.size() : 1 << 20);
					fetch({origin.url(bFullDisk ? "/same" : "/first")});
				}
				EXPECT_TRUE(target() == start);
				EXPECT_EQ(fetch({origin.url(next), kind, Action::E_RESUME, "", "", {}, 100000}).statusCode, code);
				EXPECT_EQ(describe(target()), describe(result));
			}
		}
		// Who answers to If-Range need not repeat what he was asked about, and what was kept stays of the version that it was.
		const LogCapture log;
		const Lab::Behaviour silent = Lab::file(content, {.validator = Lab::Validator::None, .tellsTime = false, .heedsIfRange = false});
		origin.at("/silent", silent).at("/silent-drops", silent, Lab::dropAfter(1000));
		for (const auto& [next, code, result] : {std::tuple("/silent", 206, content), {"/changed", 200, second}})
		{
			setTarget(absent);
			fetch({origin.url("/first")});
			EXPECT_EQ(fetch({origin.url("/silent-drops"), DownloadKind::Whole, Action::E_RESUME}).statusCode, 500);
			EXPECT_EQ(describe(target()), describe(content.substr(0, 3000)));
			EXPECT_EQ(fetch({origin.url(next), DownloadKind::Whole, Action::E_RESUME}).statusCode, code);
			EXPECT_EQ(describe(target()), describe(result));
		}
	}
}

TEST_F(Download, KnowsNoVersionOfNoBytes)
{
	setTarget(prefix);
	origin.at("/whole", Lab::file(foreign + content, {.ranges = Lab::Ranges::Ignored})).at("/other", Lab::file(content));
	{
		const FileSizeLimit limit(0);
		const LogCapture log;
		EXPECT_EQ(fetch({origin.url("/whole")}).statusCode, 500);
	}
	EXPECT_EQ(target(), "");
	EXPECT_EQ(fetch({origin.url("/other"), DownloadKind::Stepped, Action::E_OVERWRITE}).statusCode, 206);
	EXPECT_TRUE(target() == content);
}

TEST_F(Download, IsRefusedByItsBuilder)
{
	setTarget(foreign);
	const std::tuple<const char*, std::string, Action, ELogVerbosity::Type, const char*> cases[] = {
		{"abc", noPath, Action::E_RESUME, ELogVerbosity::Error, ": FilePath not set."},
		{"abc", dir.path("missing/file"), Action::E_RESUME, ELogVerbosity::Error, ": Directory does not exist."},
		{"ab", dir.path("missing/file"), Action::E_RESUME, ELogVerbosity::Error, ": Directory does not exist."},
		{"ab", targetPath, Action::E_OVERWRITE, ELogVerbosity::Error, "Cancel Request : URL to short."},
		{"abc", targetPath, Action::E_NOT_OVERWRITE, ELogVerbosity::Warning, ": File exist. Cancel download."},
	};
	for (const DownloadKind kind : bothDownloadKinds)
	{
		const std::string builder = kind == DownloadKind::Whole ? "CreateHttpRequestGETDownload" : "CreateHttpRequestGETLowRamDownload";
		for (const auto& [url, path, action, verbosity, ending] : cases)
		{
			const std::string message = ending[0] == ':' ? builder + ending : ending;
			const LogCapture log;
			completions.clear();
			EXPECT_EQ(build({url, kind, action, path}, get("http://other")).Num(), 1) << "the other records go on";
			ASSERT_EQ(completions.size(), 1u) << "inside the call";
			EXPECT_EQ(completions[0].statusCode, 400);
			EXPECT_EQ(completions[0].requestID.size(), 32u);
			EXPECT_EQ(log.count("LogTemp", verbosity, message), 1) << message;
		}
	}
	EXPECT_TRUE(target() == foreign);
}

TEST_F(Download, SaysWhenItCannotWrite)
{
	origin.at("/file", Lab::file(content));
	for (const DownloadKind kind : bothDownloadKinds)
	{
		for (const std::string& path : {dir.path(), std::string("/dev/full")}) // a directory, and a disk without room
		{
			const LogCapture log;
			const Completion result = fetch({origin.url("/file"), kind, Action::E_RESUME, path});
			EXPECT_EQ(result.statusCode, 500) << path;
			EXPECT_EQ(result.dataString, "No Response") << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "File Download: Can't write into " + path), 1) << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, path + " is not complete: "), 1) << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Request " + result.requestID + ", " + origin.url("/file")), 1) << path;
		}
	}
}

using LargeDownload = DownloadFixture; // which has the time that it takes under a sanitizer

TEST_F(LargeDownload, LeavesATextTooLargeToReadEmpty)
{
	const LogCapture log;
	const std::string large((64 << 20) + 1, 'x');
	origin.at("/file", Lab::file(large));
	const Completion result = fetch({origin.url("/file")});
	EXPECT_EQ(result.statusCode, 200);
	EXPECT_TRUE(result.dataString.empty() && result.dataArray.empty());
	EXPECT_TRUE(target() == large);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Display, "too many for the text"), 1);
}

TEST_F(Download, AFloodOfSmallBlocksIsOneEventWithoutATick)
{
	origin.at("/file", Lab::file(std::string(26214400, 'x')), Lab::pieces({1024}));
	execute(build({origin.url("/file")}));
	ASSERT_TRUE(waitFor([] { return !UCorvaneBPLibrary::getCorvaneTarget()->runList().hasRuns(); }));
	drain();
	ASSERT_EQ(downloads.size(), 1u) << "while the game stood still, later progress took the place of earlier";
	EXPECT_EQ(downloads.back().percentDownload, 100);
	EXPECT_EQ(completions.back().statusCode, 200);
}
