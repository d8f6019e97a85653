#include "DownloadFixture.h"
#include "LogCapture.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

using testing::ElementsAreArray;

namespace
{
	const std::string content = patternedBytes(2500);
	constexpr const char* noRanges = "File Download: Server does not suport download range or wrong url. Cancel Download";
	constexpr const char* nothingLeft = "File Download: File size equal to or larger than on the server. Cancel Download";
	constexpr const char* aborted = "Something's went wrong. download is aborted ";

	/** Serves the file, but for the answer to one request. */
	RangeOrigin::Answer servingExcept(int number, RangeOrigin::Answer special)
	{
		return [=](Connection& connection, const RangeRequest& request)
		{
			if (request.number == number)
			{
				special(connection, request);
			}
			else
			{
				connection.send(rangedAnswer(content, request, "ETag: \"one\"\r\nLast-Modified: today\r\n"));
			}
		};
	}

	RangeOrigin::Answer sending(std::string answer)
	{
		return [answer = std::move(answer)](Connection& connection, const RangeRequest&) { connection.send(answer); };
	}

	/** Ends when the client hangs up. */
	RangeOrigin::Answer sendingForEver(std::string head)
	{
		return [head = std::move(head)](Connection& connection, const RangeRequest&)
		{
			connection.send(head);
			for (;;)
			{
				connection.send(std::string(1000, 'x'));
			}
		};
	}

	/** The right part of another file. */
	RangeOrigin::Answer sendingFrom(std::string other, std::string headers)
	{
		return [=](Connection& connection, const RangeRequest& request) { connection.send(rangedAnswer(other, request, headers)); };
	}

	constexpr const char* version = "ETag: \"one\"\r\nLast-Modified: today\r\n";

	struct Fault
	{
		const char* name;
		RangeOrigin::Answer serve;
		size_t before; // bytes of the file on disk
		int32 statusCode;
		const char* message; // null = none
		size_t after;
	};

	std::vector<Fault> faults()
	{
		const std::string second = content.substr(1001, 1001);
		return {
			{"serves ranges", servingExcept(-1, {}), 0, 206, nullptr, 2500},
			{"serves ranges, some bytes are there", servingExcept(-1, {}), 1700, 206, nullptr, 2500},
			{"serves ranges, all bytes are there", servingExcept(-1, {}), 2500, 500, nothingLeft, 2500},
			{"ignores the probe's range", servingExcept(0, sending(answer(200, content))), 0, 500, noRanges, 0},
			{"knows no total", servingExcept(0, sending(partAnswer("bytes 0-0/*", "x"))), 0, 500, noRanges, 0},
			{"tells a total of 0", servingExcept(0, sending(partAnswer("bytes 0-0/0", "x"))), 0, 500, noRanges, 0},
			{"has an empty file", servingExcept(0, sending(answer(416, "", "Content-Range: bytes */0\r\n"))), 0, 416, noRanges, 0},
			{"does not find the file", servingExcept(0, sending(answer(404, "page"))), 0, 404, noRanges, 0},
			{"breaks the probe off", servingExcept(0, [](Connection& connection, const RangeRequest&) { connection.reset(); }), 0, 500,
				nullptr, 0},
			{"sends the whole file for the first step", servingExcept(1, sending(answer(200, content))), 0, 500, aborted, 0},
			{"never ends the probe", servingExcept(0, sendingForEver("HTTP/1.1 206 X\r\nContent-Range: bytes 0-0/2500\r\n\r\n")), 0, 500,
				noRanges, 0},
			{"sends more than the first step", servingExcept(1, sending(partAnswer("bytes 0-2499/2500", content, version))), 0, 500,
				aborted, 0},
			{"never ends the first step", servingExcept(1, sendingForEver("HTTP/1.1 206 X\r\nContent-Range: bytes 0-1000/2500\r\n\r\n")), 0,
				500, aborted, 0},
			{"never ends the last step", servingExcept(3, sendingForEver("HTTP/1.1 206 X\r\nContent-Range: bytes 2002-2499/2500\r\n\r\n")),
				0, 500, aborted, 2002},
			{"sends the whole file for the second step", servingExcept(2, sending(answer(200, content))), 0, 500, aborted, 1001},
			{"fails in the second step", servingExcept(2, sending(answer(503, "busy"))), 0, 503, aborted, 1001},
			{"is satisfied in the second step", servingExcept(2, sending(answer(416, "", "Content-Range: bytes */2500\r\n"))), 0, 416,
				aborted, 1001},
			{"sends another start", servingExcept(2, sending(partAnswer("bytes 1000-1999/2500", content.substr(1000, 1000), version))), 0,
				500, aborted, 1001},
			{"sends nothing", servingExcept(2, sending(partAnswer("bytes 1001-1001/2500", "", version))), 0, 500, aborted, 1001},
			{"loses the total", servingExcept(2, sending(partAnswer("bytes 1001-2001/*", second, version))), 0, 500, aborted, 1001},
			{"loses the range", servingExcept(2, sending(answer(206, second, version))), 0, 500, aborted, 1001},
			{"has another size", servingExcept(2, sendingFrom(content + "more", version)), 0, 500, aborted, 1001},
			{"has another tag", servingExcept(2, sendingFrom(patternedBytes(2500, 2), "ETag: \"two\"\r\nLast-Modified: today\r\n")), 0, 500,
				aborted, 1001},
			{"has another date", servingExcept(1, sendingFrom(patternedBytes(2500, 2), "ETag: \"one\"\r\nLast-Modified: now\r\n")), 0, 500,
				aborted, 0},
			{"sends a short step", servingExcept(2, sending(partAnswer("bytes 1001-1100/2500", content.substr(1001, 100), version))), 0,
				206, nullptr, 2500},
			{"breaks a step off",
				servingExcept(2, [](Connection& connection, const RangeRequest& request)
					{ sendWithoutEnd(connection, rangedAnswer(content, request, version), 500); }),
				0, 500, nullptr, 1001},
		};
	}

	class SteppedDownloads : public DownloadFixture
	{
	};

	class SteppedDownload : public DownloadFixture
	{
	protected:
		Download stepped(const std::string& url, const char* id = "") const
		{
			return {url, DownloadKind::Stepped, Action::E_RESUME, "", id, {}, 1000};
		}
	};
} // namespace

TEST_F(SteppedDownloads, LeaveTheWholeFileOrWholeSteps)
{
	for (const Fault& fault : faults())
	{
		const std::string name = std::string("a server that ") + fault.name;
		LogCapture log;
		setTarget(fault.before > 0 ? std::optional(content.substr(0, fault.before)) : std::nullopt);
		RangeOrigin origin(fault.serve);
		const Completion result = fetch({origin.url(), DownloadKind::Stepped});
		EXPECT_EQ(result.statusCode, fault.statusCode) << name;
		EXPECT_EQ(result.byteData, "") << name;
		EXPECT_TRUE(target().value_or("") == content.substr(0, fault.after)) << name << ": " << describe(target());
		for (const char* message : {noRanges, nothingLeft, aborted})
		{
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, message), message == fault.message) << name;
		}
	}
}

TEST_F(SteppedDownload, AsksForStepsOfOneByteMoreThanTheirSize)
{
	struct Case
	{
		size_t size, before;
		std::vector<std::string> ranges;
	};
	const Case cases[] = {
		{1, 0, {"bytes=0-1000"}},
		{999, 0, {"bytes=0-1000"}},
		{1000, 0, {"bytes=0-1000"}},
		{1001, 0, {"bytes=0-1000"}},
		{1002, 0, {"bytes=0-1000", "bytes=1001-"}},
		{2000, 0, {"bytes=0-1000", "bytes=1001-"}},
		{2001, 0, {"bytes=0-1000", "bytes=1001-2001"}},
		{2002, 0, {"bytes=0-1000", "bytes=1001-2001"}},
		{2003, 0, {"bytes=0-1000", "bytes=1001-2001", "bytes=2002-"}},
		{2500, 0, {"bytes=0-1000", "bytes=1001-2001", "bytes=2002-"}},
		{300, 100, {"bytes=100-"}},
		{2500, 1000, {"bytes=1000-2000", "bytes=2001-"}},
	};
	for (const Case& c : cases)
	{
		const std::string file = patternedBytes(c.size);
		setTarget(c.before > 0 ? std::optional(file.substr(0, c.before)) : std::nullopt);
		RangeOrigin origin([&](Connection& connection, const RangeRequest& request) { connection.send(rangedAnswer(file, request)); });
		EXPECT_EQ(fetch(stepped(origin.url())).statusCode, 206) << c.size;
		EXPECT_TRUE(target() == file) << c.size;
		std::vector<std::string> expected = c.ranges;
		expected.insert(expected.begin(), "bytes=0-0");
		EXPECT_THAT(origin.ranges(), ElementsAreArray(expected)) << c.size;
	}
}

TEST_F(SteppedDownload, OverwritesOnceAndRefusesOnce)
{
	LogCapture log;
	RangeOrigin origin(servingExcept(-1, {}));
	setTarget("something else");
	EXPECT_EQ(fetch({origin.url(), DownloadKind::Stepped, Action::E_OVERWRITE}).statusCode, 206);
	EXPECT_TRUE(target() == content);
	setTarget(std::nullopt);
	EXPECT_EQ(fetch({origin.url(), DownloadKind::Stepped, Action::E_NOT_OVERWRITE}).statusCode, 206);
	EXPECT_TRUE(target() == content);
}

TEST_F(SteppedDownload, GivesHeadersAndCodeOfItsLastAnswerAndNoText)
{
	RangeOrigin origin(servingExcept(-1, {}));
	const Completion result = fetch(stepped(origin.url(), "my-id"));
	EXPECT_EQ(result.statusCode, 206);
	EXPECT_EQ(result.dataString, "");
	EXPECT_TRUE(result.dataArray.empty());
	EXPECT_THAT(result.header, testing::Contains("Content-Range: bytes 2002-2499/2500"));
	EXPECT_EQ(result.requestID, "my-id");
	ASSERT_FALSE(downloads.empty());
	EXPECT_FLOAT_EQ(downloads.back().percentDownload, 100);
	EXPECT_FLOAT_EQ(downloads.back().size, 2500 * 9.536743e-7f);
}

TEST_F(SteppedDownload, RepeatsItsHeadersInEveryStepAndARangeOfTheScriptStopsIt)
{
	LogCapture log;
	RangeOrigin origin(servingExcept(-1, {}));
	Download download = stepped(origin.url());
	download.header = {{"X-Key", "k"}, {"Range", "bytes=5-9"}};
	EXPECT_EQ(fetch(download).statusCode, 500);
	EXPECT_THAT(origin.ranges(), testing::ElementsAre("bytes=5-9", "bytes=5-9"));
	EXPECT_FALSE(target().has_value());
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, aborted), 1);
}

TEST_F(SteppedDownload, EndsAProbeThatIsAnsweredByAnEndlessBody)
{
	LogCapture log;
	RangeOrigin origin(
		[](Connection& connection, const RangeRequest&)
		{
			connection.send("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
			for (;;)
			{
				connection.send(std::string(500, 'x')); // ends when the client hangs up
			}
		});
	EXPECT_EQ(fetch(stepped(origin.url())).statusCode, 500);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, noRanges), 1);
	EXPECT_FALSE(target().has_value());
}

TEST_F(SteppedDownload, GoesOnBeyondFourGibibytes)
{
	constexpr int64 onDisk = 5'000'000'000;
	const std::string end = patternedBytes(1 << 20);
	std::ofstream(targetPath).close();
	std::filesystem::resize_file(targetPath, onDisk); // without its blocks
	const int64 total = onDisk + static_cast<int64>(end.size());
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest& request)
		{
			const size_t from = request.first > onDisk ? static_cast<size_t>(request.first - onDisk) : 0;
			const std::string body = request.first == 0 ? "x" : end.substr(from, 400001);
			connection.send(
				partAnswer("bytes " + std::to_string(request.first) + "-" +
							   std::to_string(request.first + static_cast<int64>(body.size()) - 1) + "/" + std::to_string(total),
					body));
		});
	Download download = stepped(origin.url());
	download.step = 400000;
	EXPECT_EQ(fetch(download).statusCode, 206);
	ASSERT_EQ(std::filesystem::file_size(targetPath), static_cast<uintmax_t>(total));
	std::ifstream stream(targetPath, std::ios::binary);
	stream.seekg(onDisk);
	std::string written(end.size(), '\0');
	stream.read(written.data(), static_cast<std::streamsize>(written.size()));
	EXPECT_TRUE(written == end);
}

TEST_F(SteppedDownload, WaitsForTheBuilderOfItsNextStep)
{
	LogCapture log;
	dir.write("sub/x", "");
	const std::string path = dir.path("sub/file");
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest& request)
		{
			std::filesystem::remove_all(dir.path("sub")); // the builder of the first step does not find it any more
			connection.send(rangedAnswer(content, request));
		});
	Download download = stepped(origin.url(), "id");
	download.path = path;
	execute(build(download));
	drain();
	ASSERT_EQ(completions.size(), 1u) << "the builder's refusal is not told besides";
	EXPECT_EQ(completions[0].statusCode, 500);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, aborted), 1);
}

TEST_F(SteppedDownload, CarriesItsSpeedOnFromStepToStep)
{
	std::chrono::steady_clock::time_point first;
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest& request)
		{
			if (request.number == 1)
			{
				first = std::chrono::steady_clock::now();
			}
			else if (request.number == 2)
			{
				std::this_thread::sleep_until(first + std::chrono::milliseconds(1200)); // a second behind the probe's byte
			}
			connection.send(rangedAnswer(content, request));
		});
	fetch(stepped(origin.url()));
	EXPECT_FLOAT_EQ(downloads.back().megaBit, 2001 * 7.6293945e-6f);
}
