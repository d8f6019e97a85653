#include "DownloadFixture.h"
#include "Downloads/DownloadTargets.h"

#include <filesystem>
#include <fstream>

namespace
{
	const std::string steppedFile = randomBytes(2500);
	const std::optional<std::string> noFile;
	constexpr const char* noRanges = "File Download: Server does not suport download range or wrong url. Cancel Download";
	constexpr const char* nothingLeft = "File Download: File size equal to or larger than on the server. Cancel Download";
	constexpr const char* aborted = "Something's went wrong. download is aborted ";

	/** Serves the file, but for the answer to one request. Number 0 asks for the size. */
	Lab::Behaviour except(size_t number, const Lab::Behaviour& special)
	{
		std::vector<Lab::Behaviour> all(number + 2, Lab::file(steppedFile));
		all[number] = special;
		return Lab::inTurn(all);
	}

	/** A part of this version of the file, whatever was asked for. */
	Lab::Behaviour partOf(const char* range, const std::string& body)
	{
		return Lab::Behaviour({Lab::file(steppedFile), part(range, body)});
	}

	/** Ends when the client hangs up. */
	Lab::Behaviour endless(int code, const char* range)
	{
		const auto more = [](const Lab::Request&, Lab::Plan& plan) { plan.content = Lab::repeatedContent("x"); };
		return Lab::Behaviour({part(range, ""), Lab::status({.code = code}), Lab::Behaviour(more), Lab::length({.isMissing = true})});
	}

	class SteppedDownload : public DownloadFixture
	{
	protected:
		std::vector<Fault> faults() const;
	};

	std::vector<SteppedDownload::Fault> SteppedDownload::faults() const
	{
		const Lab::Behaviour honest = Lab::file(steppedFile);
		const Lab::Behaviour whole = Lab::file(steppedFile, {.ranges = Lab::Ranges::Ignored});
		const Lab::Behaviour noTotal = Lab::file(steppedFile, {.ranges = Lab::Ranges::NoTotal});
		const std::string step = steppedFile.substr(0, 1001);
		const std::string second = steppedFile.substr(1001, 1001);
		const Lab::Behaviour removeDirectory = [=, this](const Lab::Request&)
		{
			std::filesystem::remove_all(dir.path());
			return honest;
		};
		const auto anew = [](const char* name, const Lab::Behaviour& serve, int32 code, const Target& after, const char* message = nullptr)
		{
			return Fault{name, serve, noFile, code, after, Action::E_RESUME, message};
		};
		return {
			{"serves ranges", honest, noFile, 206, steppedFile},
			{"serves ranges", honest, steppedFile.substr(0, 1700), 206, steppedFile},
			{"serves ranges", honest, "something else", 206, steppedFile, Action::E_OVERWRITE},
			{"serves ranges", honest, noFile, 206, steppedFile, Action::E_NOT_OVERWRITE},
			{"serves ranges", honest, steppedFile, 500, steppedFile, Action::E_RESUME, nothingLeft},
			anew("ignores the probe's range", except(0, whole), 500, noFile, noRanges),
			anew("knows no total", except(0, noTotal), 500, noFile, noRanges),
			anew("tells a total of 0", except(0, partOf("bytes 0-0/0", "x")), 500, noFile, noRanges),
			anew("has an empty file", except(0, Lab::file("")), 416, noFile, noRanges),
			anew("does not find the file", except(0, Lab::status({.code = 404, .text = "page"})), 404, noFile, noRanges),
			anew("breaks the probe off", except(0, Lab::drop({.resets = true})), 500, noFile),
			anew("never ends the probe", except(0, endless(206, "bytes 0-0/2500")), 500, noFile, noRanges),
			anew("never ends another answer", except(0, endless(200, "none")), 500, noFile, noRanges),
			anew("sends the whole file for the first step", except(1, whole), 500, noFile, aborted),
			anew("sends more than the first step", except(1, partOf("bytes 0-2499/2500", steppedFile)), 500, noFile, aborted),
			anew("never ends the first step", except(1, endless(206, "bytes 0-1000/2500")), 500, noFile, aborted),
			anew("never ends the last step", except(3, endless(206, "bytes 2002-2499/2500")), 500, step + second, aborted),
			anew("sends the whole file for the second step", except(2, whole), 500, step, aborted),
			anew("fails in the second step", except(2, Lab::status({.code = 503, .text = "busy"})), 503, step, aborted),
			anew(
				"is satisfied in the second step", except(2, Lab::file(steppedFile, {.ranges = Lab::Ranges::Refused})), 416, step, aborted),
			anew("sends another start", except(2, partOf("bytes 1000-1999/2500", steppedFile.substr(1000, 1000))), 500, step, aborted),
			anew("sends nothing", except(2, partOf("bytes 1001-1001/2500", "")), 500, step, aborted),
			anew("loses the total", except(2, noTotal), 500, step, aborted),
			anew("loses the range", except(2, {{whole, Lab::status({.code = 206})}}), 500, step, aborted),
			anew("has another size", except(2, Lab::file(steppedFile, {.ranges = Lab::Ranges::WrongTotal})), 500, step, aborted),
			anew("has another tag", except(2, Lab::file(steppedFile, {.ranges = Lab::Ranges::OtherValidator})), 500, step, aborted),
			anew("has another date", except(1, {{honest, Lab::headers({{"Last-Modified", "now"}})}}), 500, noFile, aborted),
			anew("sends a short step", except(2, partOf("bytes 1001-1100/2500", steppedFile.substr(1001, 100))), 206, steppedFile),
			anew("breaks a step off", except(2, {{honest, Lab::dropAfter(501)}}), 500, step),
			// last, because the others need it: the builder of the next step does not find its place any more
			anew("removes the directory", removeDirectory, 500, noFile, aborted),
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
		EXPECT_TRUE(library().downloadTargetList().claimed().IsEmpty()) << fault.name;
	}
	build({""}); // the last one's builder said nothing of its own; this one is nobody's next step and tells
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
	for (const auto& [size, before, asked] : cases)
	{
		const std::string file = randomBytes(size);
		setTarget(before > 0 ? std::optional(file.substr(0, before)) : noFile);
		Lab::Origin server;
		server.at("/file", Lab::file(file));
		EXPECT_EQ(fetch({server.url("/file"), DownloadKind::Stepped}).statusCode, 206) << size;
		EXPECT_TRUE(target() == file) << size;
		EXPECT_EQ(ranges(server), asked) << size;
	}
}

TEST_F(SteppedDownload, GivesHeadersAndProgressOfItsLastAnswerAndNoText)
{
	origin.at("/file", Lab::file(steppedFile));
	const Completion result = fetch({origin.url("/file"), DownloadKind::Stepped});
	EXPECT_TRUE(result.dataString.empty() && result.dataArray.empty());
	EXPECT_THAT(result.header, testing::Contains("Content-Range: bytes 2002-2499/2500"));
	ASSERT_FALSE(downloads.empty());
	EXPECT_FLOAT_EQ(downloads.back().percentDownload, 100);
	EXPECT_FLOAT_EQ(downloads.back().size, 2500 * 9.536743e-7f);
}

TEST_F(SteppedDownload, RepeatsItsHeadersInEveryStepAndARangeOfTheScriptStopsIt)
{
	const LogCapture log;
	origin.at("/file", Lab::file(steppedFile));
	fetch({origin.url("/file"), DownloadKind::Stepped, Action::E_RESUME, "", "", {{"Range", "bytes=5-9"}}});
	EXPECT_THAT(ranges(origin), testing::ElementsAre("bytes=5-9", "bytes=5-9"));
	EXPECT_EQ(target(), noFile);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, aborted), 1);
}

TEST_F(SteppedDownload, GoesOnBeyondFourGibibytes)
{
	constexpr int64 onDisk = 5'000'000'000;
	const Lab::ContentPtr whole = Lab::madeContent(onDisk + (1 << 20));
	std::filesystem::resize_file(dir.write("target.bin", ""), onDisk); // without its blocks
	origin.at("/file", Lab::file(whole));
	EXPECT_EQ(fetch({origin.url("/file"), DownloadKind::Stepped, Action::E_RESUME, "", "", {}, 400000}).statusCode, 206);
	ASSERT_EQ(std::filesystem::file_size(targetPath), whole->size());
	std::ifstream stream(targetPath, std::ios::binary);
	stream.seekg(onDisk);
	EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(stream), {}) == wholeOf(*Lab::partOf(whole, onDisk, 1 << 20)));
}

TEST_F(SteppedDownload, CarriesItsSpeedOnFromStepToStep)
{
	const Lab::Behaviour late = Lab::stall({.time = Lab::Milliseconds(1200)}); // more than a second after the probe's byte
	origin.at("/file", except(2, {{Lab::file(steppedFile), late}}));
	fetch({origin.url("/file"), DownloadKind::Stepped});
	EXPECT_FLOAT_EQ(downloads.back().megaBit, 2001 * 7.6293945e-6f);
}
