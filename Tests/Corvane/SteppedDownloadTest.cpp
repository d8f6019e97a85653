#include "DownloadFixture.h"

#include <filesystem>
#include <fstream>

namespace
{
	const std::string content = randomBytes(2500);
	const std::optional<std::string> absent;
	constexpr const char* noRanges = "File Download: Server does not suport download range or wrong url. Cancel Download";
	constexpr const char* nothingLeft = "File Download: File size equal to or larger than on the server. Cancel Download";
	constexpr const char* aborted = "Something's went wrong. download is aborted ";
	constexpr const char* version = "ETag: \"one\"\r\nLast-Modified: today\r\n";

	/** Serves the file, but for the answer to one request. Number 0 asks for the size. */
	RangeOrigin::Answer except(int number, RangeOrigin::Answer special)
	{
		return [number, special = std::move(special), usual = serving(content, version)](Connection& connection,
				   const RangeRequest& request) { (request.number == number ? special : usual)(connection, request); };
	}

	RangeOrigin::Answer part(const char* range, const std::string& body)
	{
		return sending(partAnswer(range, body, version));
	}

	/** Ends when the client hangs up. */
	RangeOrigin::Answer endless(std::string head)
	{
		return [head = "HTTP/1.1 " + head + "\r\n\r\n"](Connection& connection, const RangeRequest&)
		{
			for (connection.send(head);;)
			{
				connection.send(std::string(500, 'x'));
			}
		};
	}

	class SteppedDownload : public DownloadFixture
	{
	protected:
		std::vector<Fault> faults() const;
	};

	std::vector<SteppedDownload::Fault> SteppedDownload::faults() const
	{
		const auto honest = serving(content, version);
		const std::string step = content.substr(0, 1001);
		const std::string second = content.substr(1001, 1001);
		const std::string other = randomBytes(2500, 2);
		const auto whole = sending(answer(200, content));
		const auto reset = [](Connection& connection, const RangeRequest&) { connection.reset(); };
		const auto breakOff = [](Connection& connection, const RangeRequest& request)
		{ sendWithoutEnd(connection, rangedAnswer(content, request, version), 500); };
		const auto removeDirectory = [=, this](Connection& connection, const RangeRequest& request)
		{
			std::filesystem::remove_all(dir.path());
			honest(connection, request);
		};
		const auto anew = [](const char* name, const RangeOrigin::Answer& serve, int32 code, const Target& after,
							  const char* message = nullptr) {
			return Fault{name, serve, absent, code, after, Action::E_RESUME, message};
		};
		return {
			{"serves ranges", honest, absent, 206, content},
			{"serves ranges", honest, content.substr(0, 1700), 206, content},
			{"serves ranges", honest, "something else", 206, content, Action::E_OVERWRITE},
			{"serves ranges", honest, absent, 206, content, Action::E_NOT_OVERWRITE},
			{"serves ranges", honest, content, 500, content, Action::E_RESUME, nothingLeft},
			anew("ignores the probe's range", except(0, whole), 500, absent, noRanges),
			anew("knows no total", except(0, part("bytes 0-0/*", "x")), 500, absent, noRanges),
			anew("tells a total of 0", except(0, part("bytes 0-0/0", "x")), 500, absent, noRanges),
			anew("has an empty file", except(0, sending(answer(416, "", "Content-Range: bytes */0\r\n"))), 416, absent, noRanges),
			anew("does not find the file", except(0, sending(answer(404, "page"))), 404, absent, noRanges),
			anew("breaks the probe off", except(0, reset), 500, absent),
			anew("never ends the probe", except(0, endless("206 X\r\nContent-Range: bytes 0-0/2500")), 500, absent, noRanges),
			anew("never ends another answer", except(0, endless("200 OK\r\nConnection: close")), 500, absent, noRanges),
			anew("sends the whole file for the first step", except(1, whole), 500, absent, aborted),
			anew("sends more than the first step", except(1, part("bytes 0-2499/2500", content)), 500, absent, aborted),
			anew("never ends the first step", except(1, endless("206 X\r\nContent-Range: bytes 0-1000/2500")), 500, absent, aborted),
			anew("never ends the last step", except(3, endless("206 X\r\nContent-Range: bytes 2002-2499/2500")), 500, step + second,
				aborted),
			anew("sends the whole file for the second step", except(2, whole), 500, step, aborted),
			anew("fails in the second step", except(2, sending(answer(503, "busy"))), 503, step, aborted),
			anew("is satisfied in the second step", except(2, sending(answer(416, "", "Content-Range: bytes */2500\r\n"))), 416, step,
				aborted),
			anew("sends another start", except(2, part("bytes 1000-1999/2500", content.substr(1000, 1000))), 500, step, aborted),
			anew("sends nothing", except(2, part("bytes 1001-1001/2500", "")), 500, step, aborted),
			anew("loses the total", except(2, part("bytes 1001-2001/*", second)), 500, step, aborted),
			anew("loses the range", except(2, sending(answer(206, second, version))), 500, step, aborted),
			anew("has another size", except(2, serving(content + "more", version)), 500, step, aborted),
			anew("has another tag", except(2, serving(other, "ETag: \"two\"\r\nLast-Modified: today\r\n")), 500, step, aborted),
			anew("has another date", except(1, serving(other, "ETag: \"one\"\r\nLast-Modified: now\r\n")), 500, absent, aborted),
			anew("sends a short step", except(2, part("bytes 1001-1100/2500", content.substr(1001, 100))), 206, content),
			anew("breaks a step off", except(2, breakOff), 500, step),
			// last, because the others need it: the builder of the next step does not find its place any more
			anew("removes the directory", removeDirectory, 500, absent, aborted),
		};
	}
} // namespace

TEST_F(SteppedDownload, LeavesTheWholeFileOrWholeSteps)
{
	for (const Fault& fault : faults())
	{
		const LogCapture log;
		expectOutcome(fault, DownloadKind::Stepped);
		for (const char* message : {noRanges, nothingLeft, aborted})
		{
			EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, message), message == fault.message) << fault.name;
		}
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Request my-id, http://127.0.0.1:"), fault.statusCode < 400 ? 0 : 1)
			<< fault.name;
		EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "secret"), 0) << fault.name;
	}
}

TEST_F(SteppedDownload, AsksForStepsOfOneByteMoreThanTheirSize)
{
	const std::tuple<size_t, size_t, std::vector<std::string>> cases[] = {
		{1, 0, {"bytes=0-0", "bytes=0-1000"}},
		{1000, 0, {"bytes=0-0", "bytes=0-1000"}},
		{1001, 0, {"bytes=0-0", "bytes=0-1000"}},
		{1002, 0, {"bytes=0-0", "bytes=0-1000", "bytes=1001-"}},
		{2000, 0, {"bytes=0-0", "bytes=0-1000", "bytes=1001-"}},
		{2001, 0, {"bytes=0-0", "bytes=0-1000", "bytes=1001-2001"}},
		{2003, 0, {"bytes=0-0", "bytes=0-1000", "bytes=1001-2001", "bytes=2002-"}},
		{300, 100, {"bytes=0-0", "bytes=100-"}},
		{2500, 1000, {"bytes=0-0", "bytes=1000-2000", "bytes=2001-"}},
	};
	for (const auto& [size, before, ranges] : cases)
	{
		const std::string file = randomBytes(size);
		setTarget(before > 0 ? std::optional(file.substr(0, before)) : absent);
		RangeOrigin origin(serving(file));
		EXPECT_EQ(fetch({origin.url(), DownloadKind::Stepped}).statusCode, 206) << size;
		EXPECT_TRUE(target() == file) << size;
		EXPECT_EQ(origin.ranges(), ranges) << size;
	}
}

TEST_F(SteppedDownload, GivesHeadersAndProgressOfItsLastAnswerAndNoText)
{
	RangeOrigin origin(serving(content));
	const Completion result = fetch({origin.url(), DownloadKind::Stepped});
	EXPECT_TRUE(result.dataString.empty() && result.dataArray.empty());
	EXPECT_THAT(result.header, testing::Contains("Content-Range: bytes 2002-2499/2500"));
	ASSERT_FALSE(downloads.empty());
	EXPECT_FLOAT_EQ(downloads.back().percentDownload, 100);
	EXPECT_FLOAT_EQ(downloads.back().size, 2500 * 9.536743e-7f);
}

TEST_F(SteppedDownload, RepeatsItsHeadersInEveryStepAndARangeOfTheScriptStopsIt)
{
	const LogCapture log;
	RangeOrigin origin(serving(content));
	fetch({origin.url(), DownloadKind::Stepped, Action::E_RESUME, "", "", {{"Range", "bytes=5-9"}}});
	EXPECT_THAT(origin.ranges(), testing::ElementsAre("bytes=5-9", "bytes=5-9"));
	EXPECT_EQ(target(), absent);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, aborted), 1);
}

TEST_F(SteppedDownload, GoesOnBeyondFourGibibytes)
{
	constexpr int64 onDisk = 5'000'000'000;
	const std::string end = randomBytes(1 << 20);
	std::filesystem::resize_file(dir.write("target.bin", ""), onDisk); // without its blocks
	const int64 total = onDisk + (1 << 20);
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest& request)
		{
			const std::string body = request.first == 0 ? "x" : end.substr(static_cast<size_t>(request.first - onDisk), 400001);
			const int64 last = request.first + static_cast<int64>(body.size()) - 1;
			connection.send(
				partAnswer("bytes " + std::to_string(request.first) + "-" + std::to_string(last) + "/" + std::to_string(total), body));
		});
	EXPECT_EQ(fetch({origin.url(), DownloadKind::Stepped, Action::E_RESUME, "", "", {}, 400000}).statusCode, 206);
	ASSERT_EQ(std::filesystem::file_size(targetPath), static_cast<uintmax_t>(total));
	std::ifstream stream(targetPath, std::ios::binary);
	stream.seekg(onDisk);
	EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(stream), {}) == end);
}

TEST_F(SteppedDownload, CarriesItsSpeedOnFromStepToStep)
{
	using namespace std::chrono;
	steady_clock::time_point first;
	RangeOrigin origin(
		[&](Connection& connection, const RangeRequest& request)
		{
			first = request.number < 2 ? steady_clock::now() : first;
			std::this_thread::sleep_until(first + milliseconds(request.number == 2 ? 1200 : 0)); // a second after the probe's byte
			connection.send(rangedAnswer(content, request));
		});
	fetch({origin.url(), DownloadKind::Stepped});
	EXPECT_FLOAT_EQ(downloads.back().megaBit, 2001 * 7.6293945e-6f);
}
