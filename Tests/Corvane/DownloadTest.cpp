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
	const std::string page = "a page of the server";
	const std::optional<std::string> absent;

	RangeOrigin::Answer breakingOff(std::string answer, size_t missing)
	{
		return [=](Connection& connection, const RangeRequest&) { sendWithoutEnd(connection, answer, missing); };
	}

	void redirect(Connection& connection, const RangeRequest& request)
	{
		const bool bArrived = targetOf(request.head) == "/target";
		connection.send(bArrived ? rangedAnswer(content, request) : answer(302, page, "Location: /target\r\n"));
	}

	void fallSilent(Connection& connection, const RangeRequest&)
	{
		const std::string whole = answer(200, content);
		connection.send(whole.substr(0, whole.size() - 4000));
		connection.waitForPeer();
	}

	std::string chunked(int code, const std::string& headers, const std::string& body)
	{
		char size[16];
		std::snprintf(size, sizeof size, "%zx\r\n", body.size());
		return "HTTP/1.1 " + std::to_string(code) + " X\r\nTransfer-Encoding: chunked\r\n" + headers + "\r\n" + size + body +
			   "\r\n0\r\n\r\n";
	}

	class Download : public DownloadFixture
	{
	protected:
		Download()
			: DownloadFixture(settings())
		{
		}
		static FGameLoopSettings settings()
		{
			FGameLoopSettings settings;
			settings.http.activityTimeoutSeconds = 0.5;
			return settings;
		}

		std::vector<Fault> faults() const;
	};

	std::vector<Download::Fault> Download::faults() const
	{
		const auto overwrite = Action::E_OVERWRITE;
		const auto refuse = Action::E_NOT_OVERWRITE;
		const std::string tail = content.substr(1000);
		const auto honest = serving(content);
		const auto removeDirectory = [=, this](Connection& connection, const RangeRequest& request)
		{
			std::filesystem::remove_all(dir.path());
			honest(connection, request);
		};
		return {
			{"honours ranges", honest, absent, 200, content},
			{"honours ranges", honest, prefix, 206, content},
			{"honours ranges", honest, foreign, 200, content, overwrite},
			{"honours ranges", honest, foreign, 400, foreign, refuse},
			{"honours ranges", honest, absent, 200, content, refuse},
			{"has no more than is on disk", honest, content, 416, content},
			{"ignores the range", sending(answer(200, content)), prefix, 200, content},
			{"sends another start", sending(partAnswer("bytes 0-4999/5000", content)), prefix, 500, prefix},
			{"sends a later start", sending(partAnswer("bytes 1001-4999/5000", content.substr(1001))), prefix, 500, prefix},
			{"sends a part unasked", sending(partAnswer("bytes 1000-4999/5000", tail)), absent, 500, absent},
			{"tells no range", sending(answer(206, tail)), prefix, 500, prefix},
			{"tells a total that is on disk", sending(partAnswer("bytes 0-999/1000", prefix)), prefix, 206, prefix},
			{"tells a total below what is on disk", sending(partAnswer("bytes 0-99/100", content.substr(0, 100))), prefix, 500, prefix},
			{"sends less than the rest", sending(partAnswer("bytes 1000-2999/5000", content.substr(1000, 2000))), prefix, 500,
				content.substr(0, 3000)},
			{"sends less than its range", sending(partAnswer("bytes 1000-4999/*", content.substr(1000, 2000))), prefix, 500,
				content.substr(0, 3000)},
			{"sends a beginning unasked", sending(partAnswer("bytes 0-999/5000", prefix)), absent, 500, prefix},
			{"tells too small a total", sending(partAnswer("bytes 1000-4999/4000", tail)), prefix, 500, prefix},
			{"knows no total", sending(partAnswer("bytes 1000-4999/*", tail)), prefix, 206, content},
			{"sends more than its range", sending(chunked(206, "Content-Range: bytes 1000-1999/5000\r\n", tail)), prefix, 500, prefix},
			{"sends more than announced", sending("HTTP/1.1 200 OK\r\nContent-Length: 4000\r\nConnection: close\r\n\r\n" + content), absent,
				200, content.substr(0, 4000)},
			{"is satisfied", sending(answer(416, page, "Content-Range: bytes */1000\r\n")), prefix, 416, prefix},
			{"has lost the file's end", sending(answer(416, page)), prefix, 416, prefix},
			{"forbids", sending(answer(403, page)), absent, 403, absent},
			{"does not find", sending(answer(404, page)), prefix, 404, prefix},
			{"fails", sending(answer(500, page)), prefix, 500, prefix},
			{"is busy", sending(answer(503, page)), absent, 503, absent},
			{"sends chunks", sending(chunked(200, "", content)), absent, 200, content},
			{"says that it packs the body", sending(answer(200, content, "Content-Encoding: gzip\r\n")), absent, 500, absent},
			{"has an empty file", sending(answer(200, "")), absent, 200, absent},
			{"sends an empty part", sending(partAnswer("bytes 1000-4999/5000", "")), prefix, 500, prefix},
			{"sends an empty part unasked", sending(partAnswer("bytes 0-4999/5000", "")), absent, 500, absent},
			{"has become empty", sending(answer(200, "")), prefix, 500, prefix},
			{"sends more than a part unasked", sending(partAnswer("bytes 0-999/5000", content)), absent, 500, absent},
			{"has an empty file", sending(answer(200, "")), foreign, 200, absent, overwrite},
			{"redirects", redirect, prefix, 206, content},
			{"breaks off", breakingOff(answer(200, content), 3000), absent, 500, content.substr(0, 2000)},
			{"breaks off chunks", breakingOff(chunked(200, "", content), 7), absent, 500, content},
			{"breaks off the rest", breakingOff(partAnswer("bytes 1000-4999/5000", tail), 3000), prefix, 500, content.substr(0, 2000)},
			{"breaks off a wrong part", breakingOff(partAnswer("bytes 0-4999/5000", content), 3000), prefix, 500, prefix},
			{"breaks off the whole file after a part", breakingOff(answer(200, content), 3000), prefix, 500, prefix},
			{"breaks off before the body", breakingOff(answer(200, content), 5000), absent, 500, absent},
			{"falls silent", fallSilent, absent, 500, content.substr(0, 1000)},
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
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "File Download: " + targetPath + " is not complete: "), bTold) << fault.name;
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Request my-id, http://127.0.0.1:"), bTold) << fault.name;
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "secret"), 0);
	}
}

TEST_F(Download, TellsTextAndLinesThatCameAndCountsWhatIsOnDisk)
{
	setTarget("begin,");
	RangeOrigin origin(serving("begin,one\r\n\r\ntwo"));
	const Completion result = fetch({origin.url()});
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
	RangeOrigin origin(serving(content));
	for (const DownloadKind kind : bothDownloadKinds)
	{
		setTarget(foreign);
		fetch({origin.url(), kind, Action::E_OVERWRITE, "target.bin", "", {}, 9999, EHTTPCorvFileUpload::E_gd});
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
			RangeOrigin origin([&](Connection& connection, const RangeRequest& request)
				{ sendWithoutEnd(connection, rangedAnswer(content, request), missing); });
			setTarget(before);
			const TArray<FhttpRequest> requests =
				build({origin.url(), DownloadKind::Whole, Action::E_OVERWRITE, "", "", {{"Range", "bytes=100-199"}}});
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
	const std::string second = randomBytes(6000, 2);
	const auto versioned = [&](const std::string& whole, const std::string& name, size_t missing)
	{
		return [=](Connection& connection, const RangeRequest& request)
		{
			RangeRequest asked = request;
			const size_t at = request.head.find("\r\nIf-Range: ");
			if (at != std::string::npos && request.head.substr(at + 12, name.size()) != name)
			{
				asked.range.clear();
			}
			const std::string header = (name[0] == '"' ? "ETag: " : "Last-Modified: ") + name + "\r\n";
			sendWithoutEnd(connection, rangedAnswer(whole, asked, header), missing);
		};
	};
	const std::pair<std::string, std::string> versions[] = {
		{"\"one\"", "\"two\""}, {"Sat, 21 Nov 2026 10:00:00 GMT", "Sun, 22 Nov 2026 10:00:00 GMT"}};
	for (const auto& [before, after] : versions)
	{
		for (const DownloadKind kind : bothDownloadKinds)
		{
			const LogCapture log;
			const std::string start = content.substr(0, 2000);
			RangeOrigin first(versioned(content, before, 3000)), changed(versioned(second, after, 0)), same(versioned(content, before, 0));
			const bool bWhole = kind == DownloadKind::Whole;
			for (const auto& [next, code, result, bFullDisk] : {std::tuple(&changed, bWhole ? 200 : 500, bWhole ? second : start, false),
					 {&same, 206, content, false}, {&changed, bWhole ? 200 : 500, bWhole ? second : start, true}})
			{
				setTarget(absent);
				{
					const FileSizeLimit limit(bFullDisk ? start.size() : 1 << 20);
					fetch({bFullDisk ? same.url() : first.url()});
				}
				EXPECT_TRUE(target() == start);
				EXPECT_EQ(fetch({next->url(), kind, Action::E_RESUME, "", "", {}, 100000}).statusCode, code);
				EXPECT_EQ(describe(target()), describe(result));
			}
		}
	}
}

TEST_F(Download, KnowsNoVersionOfNoBytes)
{
	setTarget(content.substr(0, 1000));
	RangeOrigin whole(sending(answer(200, content, "ETag: \"one\"\r\n"))), other(serving(content, "ETag: \"two\"\r\n"));
	{
		const FileSizeLimit limit(0);
		const LogCapture log;
		EXPECT_EQ(fetch({whole.url()}).statusCode, 500);
	}
	EXPECT_EQ(target(), "");
	EXPECT_EQ(fetch({other.url(), DownloadKind::Stepped, Action::E_OVERWRITE}).statusCode, 206);
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
	RangeOrigin origin(serving(content));
	for (const DownloadKind kind : bothDownloadKinds)
	{
		for (const std::string& path : {dir.path(), std::string("/dev/full")}) // a directory, and a disk without room
		{
			const LogCapture log;
			const Completion result = fetch({origin.url(), kind, Action::E_RESUME, path});
			EXPECT_EQ(result.statusCode, 500) << path;
			EXPECT_EQ(result.dataString, "No Response") << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "File Download: Can't write into " + path), 1) << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, path + " is not complete: "), 1) << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Request " + result.requestID + ", " + origin.url()), 1) << path;
		}
	}
}

using LargeDownload = DownloadFixture; // which has the time that it takes under a sanitizer

TEST_F(LargeDownload, LeavesATextTooLargeToReadEmpty)
{
	const LogCapture log;
	const std::string large((64 << 20) + 1, 'x');
	RangeOrigin origin(serving(large));
	const Completion result = fetch({origin.url()});
	EXPECT_EQ(result.statusCode, 200);
	EXPECT_TRUE(result.dataString.empty() && result.dataArray.empty());
	EXPECT_TRUE(target() == large);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Display, "too many for the text"), 1);
}

TEST_F(Download, AFloodOfSmallBlocksIsOneEventWithoutATick)
{
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest&)
		{
			connection.send("HTTP/1.1 200 OK\r\nContent-Length: 26214400\r\n\r\n");
			for (size_t number = 0; number < 25600; ++number)
			{
				connection.send(std::string(1024, 'x'));
			}
		});
	execute(build({origin.url()}));
	ASSERT_TRUE(waitFor([] { return !UCorvaneBPLibrary::getCorvaneTarget()->runList().hasRuns(); }));
	drain();
	ASSERT_EQ(downloads.size(), 1u) << "while the game stood still, later progress took the place of earlier";
	EXPECT_EQ(downloads.back().percentDownload, 100);
	EXPECT_EQ(completions.back().statusCode, 200);
}
