#include "DownloadFixture.h"
#include "LogCapture.h"
#include "Runs/RunList.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{
	const std::string content = patternedBytes(5000);
	const std::string prefix = content.substr(0, 1000);
	const std::string foreign(1000, 'f');
	const std::string page = "a page of the server";
	const std::optional<std::string> absent;

	using Target = std::optional<std::string>;

	/** What the server does, what is on disk, and what must come of it. */
	struct Fault
	{
		const char* name;
		RangeOrigin::Answer serve;
		Target before;
		int32 statusCode;
		Target after;
		EHTTPCorvFileDownloadResumeType action = EHTTPCorvFileDownloadResumeType::E_RESUME;
	};

	RangeOrigin::Answer sending(std::string answer)
	{
		return [answer = std::move(answer)](Connection& connection, const RangeRequest&) { connection.send(answer); };
	}

	RangeOrigin::Answer breakingOff(std::string answer, size_t missing)
	{
		return [=](Connection& connection, const RangeRequest&) { sendWithoutEnd(connection, answer, missing); };
	}

	void serveHonestly(Connection& connection, const RangeRequest& request)
	{
		connection.send(rangedAnswer(content, request));
	}

	void redirect(Connection& connection, const RangeRequest& request)
	{
		const bool bArrived = targetOf(request.head) == "/target";
		connection.send(bArrived ? rangedAnswer(content, request) : answer(302, page, "Location: /target\r\n"));
	}

	std::string chunked(int code, const std::string& headers, const std::string& body)
	{
		char size[16];
		std::snprintf(size, sizeof size, "%zx\r\n", body.size());
		return "HTTP/1.1 " + std::to_string(code) + " X\r\nTransfer-Encoding: chunked\r\n" + headers + "\r\n" + size + body +
			   "\r\n0\r\n\r\n";
	}

	const auto overwrite = EHTTPCorvFileDownloadResumeType::E_OVERWRITE;
	const auto refuse = EHTTPCorvFileDownloadResumeType::E_NOT_OVERWRITE;

	std::vector<Fault> faults()
	{
		const std::string tail = content.substr(1000);
		return {
			{"honours ranges", serveHonestly, absent, 200, content},
			{"honours ranges", serveHonestly, prefix, 206, content},
			{"honours ranges", serveHonestly, foreign, 200, content, overwrite},
			{"honours ranges", serveHonestly, foreign, 400, foreign, refuse},
			{"honours ranges", serveHonestly, absent, 200, content, refuse},
			{"has no more than is on disk", serveHonestly, content, 416, content},
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
			{"breaks off the whole file behind a part", breakingOff(answer(200, content), 3000), prefix, 500, prefix},
			{"breaks off before the body", breakingOff(answer(200, content), 5000), absent, 500, absent},
		};
	}

	class Downloads : public DownloadFixture
	{
	protected:
		Downloads()
			: DownloadFixture(settings())
		{
		}

		static FGameLoopSettings settings()
		{
			FGameLoopSettings settings;
			settings.http.activityTimeoutSeconds = 0.5;
			return settings;
		}
	};

	class Download : public DownloadFixture
	{
	};
} // namespace

TEST_F(Downloads, LeaveTheWholeFileATruePrefixOrWhatWasThere)
{
	for (const Fault& fault : faults())
	{
		LogCapture log;
		const std::string name = std::string("a server that ") + fault.name + ", " + describe(fault.before) + " before";
		setTarget(fault.before);
		RangeOrigin origin(fault.serve);
		const size_t before = completions.size();
		execute(build({origin.url("/file?secret#x"), DownloadKind::Whole, fault.action, "", "my-id"}));
		drain();
		ASSERT_EQ(completions.size(), before + 1) << name;
		EXPECT_EQ(completions.back().statusCode, fault.statusCode) << name;
		EXPECT_EQ(completions.back().byteData, "") << name;
		EXPECT_EQ(describe(target()), describe(fault.after)) << name;
		EXPECT_TRUE(target() == fault.after) << name << ": other bytes";
		const bool bTold = fault.statusCode > 400;
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "File Download: " + targetPath + " is not complete: "), bTold) << name;
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Request my-id, " + origin.url()), bTold) << name;
	}
}

TEST_F(Downloads, OfASilentServerKeepWhatArrived)
{
	LogCapture log;
	Gate never;
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest&)
		{
			connection.send(answer(200, content).substr(0, answer(200, content).size() - 4000));
			connection.waitFor(never);
		});
	EXPECT_EQ(fetch({origin.url()}).statusCode, 500);
	EXPECT_TRUE(target() == content.substr(0, 1000));
}

TEST_F(Downloads, AreFinishedByResumesHoweverOftenTheyBreakOff)
{
	LogCapture log;
	RangeOrigin origin(
		[](Connection& connection, const RangeRequest& request)
		{
			const size_t left = content.size() - static_cast<size_t>(request.first);
			sendWithoutEnd(connection, rangedAnswer(content, request), left > 700 ? left - 700 : 0);
		});
	int rounds = 0;
	for (; target() != content && rounds < 20; ++rounds)
	{
		fetch({origin.url()});
	}
	EXPECT_EQ(rounds, 8);
	EXPECT_THAT(origin.ranges(),
		ElementsAre("", "bytes=700-", "bytes=1400-", "bytes=2100-", "bytes=2800-", "bytes=3500-", "bytes=4200-", "bytes=4900-"));
}

TEST_F(Download, TellsTextAndLinesButNoBytes)
{
	RangeOrigin origin(sending(answer(200, "one\r\n\r\ntwo")));
	const Completion result = fetch({origin.url(), DownloadKind::Whole, Action::E_OVERWRITE, "", "my-id"});
	EXPECT_EQ(result.dataString, "one\r\n\r\ntwo");
	EXPECT_THAT(result.dataArray, ElementsAre("one", "two"));
	EXPECT_THAT(result.header, testing::Contains("Content-Length: 10"));
	EXPECT_EQ(result.byteData, "");
	EXPECT_EQ(result.requestID, "my-id");
}

TEST(DownloadIntoTheGame, IsReadFromTheProjectsFolder)
{
	class Game : public DownloadFixture
	{
	public:
		explicit Game(const TempDir& project)
			: DownloadFixture(settings(project))
		{
		}
		int32 fetch(const std::string& url, const char* path)
		{
			TArray<FhttpRequest> requests;
			FString id;
			UCorvaneBPLibrary::CreateHttpRequestGETDownload(
				{}, text(url), {}, Action::E_OVERWRITE, EHTTPCorvFileUpload::E_gd, path, "", requests, id);
			return run(requests).statusCode;
		}

	private:
		static FGameLoopSettings settings(const TempDir& project)
		{
			FGameLoopSettings settings;
			settings.projectDirectory = project.path();
			return settings;
		}
		void TestBody() override {}
	};
	const TempDir project;
	project.write("Saved/x", "");
	Game game(project);
	RangeOrigin origin(serveHonestly);
	EXPECT_EQ(game.fetch(origin.url(), "Saved/file"), 200);
	EXPECT_TRUE(project.read("Saved/file") == content);
}

TEST_F(Download, CountsWhatIsOnDiskAsProgress)
{
	setTarget(prefix);
	RangeOrigin origin(serveHonestly);
	fetch({origin.url()});
	ASSERT_FALSE(downloads.empty());
	EXPECT_FLOAT_EQ(downloads.back().size, 5000 * 9.536743e-7f);
	EXPECT_FLOAT_EQ(downloads.back().megaBytesReceived, 5000 * 9.536743e-7f);
	EXPECT_FLOAT_EQ(downloads.back().percentDownload, 100);
}

TEST_F(Download, OfAPartOfOnesOwnChoiceIsWrittenWhereItFollows)
{
	struct Case
	{
		const char* range;
		std::string part;
		Target before, after;
	};
	const std::string hundred = content.substr(100, 100);
	for (const Case& c : {Case{"bytes=100-199", hundred, absent, hundred}, {"bytes=100-199", hundred, "", hundred},
			 {"bytes=100-199", hundred, content.substr(0, 100), content.substr(0, 200)}, {"bytes=100-199", hundred, prefix, prefix}})
	{
		for (const bool whole : {true, false}) // or broken off
		{
			LogCapture log;
			RangeOrigin origin([&](Connection& connection, const RangeRequest& request)
				{ sendWithoutEnd(connection, rangedAnswer(content, request), whole ? 0 : 50); });
			setTarget(c.before);
			TArray<FhttpRequest> requests = build({origin.url(), DownloadKind::Whole, Action::E_OVERWRITE, "", "", {{"Range", c.range}}});
			setTarget(c.before); // as if it had come in between: only then is it there and no resume
			const bool bFollows = c.before != c.after;
			EXPECT_EQ(run(requests).statusCode, whole && bFollows ? 206 : 500);
			const std::string kept = c.after->substr(0, c.after->size() - (whole || !bFollows ? 0 : 50));
			EXPECT_EQ(describe(target()), describe(kept)) << c.range;
			EXPECT_TRUE(target() == kept);
		}
	}
}

TEST_F(Download, ThatIsResumedNeverMixesTwoVersions)
{
	const std::string second = patternedBytes(6000, 2);
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
	const std::string firstDate = "Sat, 21 Nov 2026 10:00:00 GMT", secondDate = "Sun, 22 Nov 2026 10:00:00 GMT";
	for (const auto& [before, after] : {std::pair<std::string, std::string>("\"one\"", "\"two\""), {firstDate, secondDate}})
	{
		for (const DownloadKind kind : {DownloadKind::Whole, DownloadKind::Stepped})
		{
			LogCapture log;
			setTarget(absent);
			RangeOrigin first(versioned(content, before, 3000));
			fetch({first.url()});
			EXPECT_TRUE(target() == content.substr(0, 2000));
			RangeOrigin changed(versioned(second, after, 0));
			const bool bWhole = kind == DownloadKind::Whole;
			EXPECT_EQ(fetch({changed.url(), kind}).statusCode, bWhole ? 200 : 500);
			EXPECT_TRUE(target() == (bWhole ? second : content.substr(0, 2000))) << describe(target());

			setTarget(absent);
			fetch({first.url()});
			RangeOrigin same(versioned(content, before, 0));
			EXPECT_EQ(fetch({same.url(), kind, Action::E_RESUME, "", "", {}, 100000}).statusCode, 206);
			EXPECT_TRUE(target() == content);
		}
	}
}

TEST_F(Download, IsRefusedByItsBuilder)
{
	struct Case
	{
		const char* url;
		std::string path;
		Action action;
		ELogVerbosity::Type verbosity;
		const char* message;
	};
	setTarget(foreign);
	dir.write("sub/file", "x");
	const Case cases[] = {
		{"abc", "", Action::E_RESUME, ELogVerbosity::Error, "%: FilePath not set."},
		{"abc", dir.path("missing/file"), Action::E_RESUME, ELogVerbosity::Error, "%: Directory does not exist."},
		{"ab", dir.path("missing/file"), Action::E_RESUME, ELogVerbosity::Error, "%: Directory does not exist."},
		{"ab", targetPath, Action::E_OVERWRITE, ELogVerbosity::Error, "Cancel Request : URL to short."},
		{"abc", targetPath, Action::E_NOT_OVERWRITE, ELogVerbosity::Warning, "%: File exist. Cancel download."},
	};
	for (const DownloadKind kind : {DownloadKind::Whole, DownloadKind::Stepped})
	{
		for (const Case& c : cases)
		{
			const std::string builder = kind == DownloadKind::Whole ? "CreateHttpRequestGETDownload" : "CreateHttpRequestGETLowRamDownload";
			const std::string message = c.message[0] == '%' ? builder + (c.message + 1) : c.message;
			LogCapture log;
			completions.clear();
			TArray<FhttpRequest> others = get("http://127.0.0.1/");
			TArray<FhttpRequest> requests;
			FString id;
			const int32 result = kind == DownloadKind::Whole
									 ? UCorvaneBPLibrary::CreateHttpRequestGETDownload(
										   others, c.url, {}, c.action, EHTTPCorvFileUpload::E_ad, text(c.path), "", requests, id)
									 : UCorvaneBPLibrary::CreateHttpRequestGETLowRamDownload(
										   others, c.url, {}, c.action, EHTTPCorvFileUpload::E_ad, text(c.path), "", requests, id, 1000);
			EXPECT_EQ(result, 400) << message;
			EXPECT_EQ(requests.Num(), 1) << "the other records go on";
			ASSERT_EQ(completions.size(), 1u) << "inside the call";
			EXPECT_EQ(completions[0].statusCode, 400);
			EXPECT_EQ(completions[0].requestID, utf8(id));
			EXPECT_EQ(id.Len(), 32);
			EXPECT_EQ(log.count("LogTemp", c.verbosity, message), 1) << message;
		}
	}
	EXPECT_TRUE(target() == foreign);
}

TEST_F(Download, SaysWhenItCannotWrite)
{
	RangeOrigin origin(serveHonestly);
	dir.write("removed/x", "");
	for (const DownloadKind kind : {DownloadKind::Whole, DownloadKind::Stepped})
	{
		for (const std::string& path : {dir.path(), std::string("/dev/full")}) // a directory, and a disk without room
		{
			LogCapture log;
			const Completion result = fetch({origin.url(), kind, Action::E_RESUME, path});
			EXPECT_EQ(result.statusCode, 500) << path;
			EXPECT_EQ(result.dataString, "No Response") << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "File Download: Can't write into " + path), 1) << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, path + " is not complete: "), 1) << path;
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Request " + result.requestID + ", " + origin.url()), 1) << path;
		}
	}
}

TEST_F(Download, MakesItsDirectoryAgainWhenThatIsRemovedMeanwhile)
{
	dir.write("sub/x", "");
	Gate gone;
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest& request)
		{
			connection.waitFor(gone);
			serveHonestly(connection, request);
		});
	execute(build({origin.url(), DownloadKind::Whole, Action::E_RESUME, dir.path("sub/file")}));
	std::filesystem::remove_all(dir.path("sub"));
	gone.open();
	drain();
	ASSERT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].statusCode, 200);
	EXPECT_TRUE(dir.read("sub/file") == content);
}

TEST_F(Download, LeavesATextTooLargeToReadEmpty)
{
	LogCapture log;
	const std::string large((64 << 20) + 1, 'x');
	RangeOrigin origin(sending(answer(200, large)));
	const Completion result = fetch({origin.url()});
	EXPECT_EQ(result.statusCode, 200);
	EXPECT_EQ(result.dataString, "");
	EXPECT_TRUE(result.dataArray.empty());
	EXPECT_TRUE(target() == large);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Display, "too many for the text"), 1);
}

TEST_F(Download, AFloodOfSmallBlocksIsOneEventWithoutATick)
{
	constexpr size_t blocks = 25 << 10;
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest&)
		{
			connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(blocks << 10) + "\r\n\r\n");
			const std::string block(1024, 'x');
			for (size_t number = 0; number < blocks; ++number)
			{
				connection.send(block);
			}
		});
	execute(build({origin.url()}));
	ASSERT_TRUE(waitFor([] { return !UCorvaneBPLibrary::getCorvaneTarget()->runList().hasRuns(); }));
	drain();
	ASSERT_EQ(downloads.size(), 1u) << "while the game stood still, later progress took the place of earlier";
	EXPECT_EQ(downloads.back().percentDownload, 100);
	EXPECT_EQ(completions.back().statusCode, 200);
}
