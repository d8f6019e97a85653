#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "Runs/Result.h"

#include <gmock/gmock.h>

namespace
{
	constexpr const char* defaultUserAgent =
		"UE4 Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/69.0.3497.81 Safari/537.36";

	using Get = ModuleFixture;

	std::string repeated(const std::string& piece, size_t times)
	{
		return wholeOf(*Lab::repeatedContent(piece, piece.size() * times));
	}
} // namespace

TEST_F(Get, GoesOverTheWireAsDescribed)
{
	Lab::Origin server;
	server.at("*", "");
	run(get(server.url("/a+b?x=1%20"), {{"X-First", "1"}, {"X-Second", u"zwei ü"}}));
	run(get(server.url(), {{"content-type", "text/plain"}, {"USER-AGENT", "mine"}}));
	const std::string first = " HTTP/1.1\r\n" + firstHeaders(server.authority());
	const std::vector<Lab::Exchange> log = server.log();
	ASSERT_EQ(log.size(), 2u);
	EXPECT_EQ(log[0].request->head,
		"GET /a+b?x=1%20" + first + "User-Agent: " + defaultUserAgent +
			"\r\nContent-Type: application/x-www-form-urlencoded\r\nX-First: 1\r\nX-Second: zwei ü\r\nContent-Length: 0\r\n\r\n");
	EXPECT_EQ(log[1].request->head, "GET /" + first + "USER-AGENT: mine\r\ncontent-type: text/plain\r\nContent-Length: 0\r\n\r\n");
}

TEST_F(Get, BringsOneEventWithTheAnswerAsTextLinesAndBytes)
{
	struct Case
	{
		int code;
		std::string body;
		std::string text;
		std::vector<std::string> lines;
	};
	const std::string x31(31, 'x'), y64(64, 'y');
	const Case cases[] = {
		{200, "a\r\n\r\nb\nc\r\n", "a\r\n\r\nb\nc\r\n", {"a", "b\nc"}},
		{200, "", "", {}},
		{200, "z\xFF\xE2\x82", "z\uFFFD\uFFFD\uFFFD", {"z\uFFFD\uFFFD\uFFFD"}},
		{200, std::string("a\0b", 3), std::string("a\0b", 3), {std::string("a\0b", 3)}},
		{200, x31 + "\r\r\n" + y64 + "\r\n\r\n" + x31 + "\r", x31 + "\r\r\n" + y64 + "\r\n\r\n" + x31 + "\r",
			{x31 + "\r", y64, x31 + "\r"}},
		{404, "page", "page", {"page"}},
		{503, "busy", "busy", {"busy"}},
	};
	for (const Case& c : cases)
	{
		Lab::Origin server;
		server.at("/", Lab::status({.code = c.code, .text = c.body}), Lab::headers({{"X-Test", "yes"}}));
		const Completion result = run(get(server.url(), {}, "my id"));
		EXPECT_EQ(result.brief(), std::to_string(c.code) + ' ' + c.text);
		EXPECT_EQ(result.byteData, c.body);
		EXPECT_EQ(result.dataArray, c.lines);
		EXPECT_EQ(result.requestID, "my id");
		EXPECT_THAT(result.header, testing::Contains("X-Test: yes"));
	}
}

TEST_F(Get, BringsNoLinesWhereThereAreTooMany)
{
	LogCapture log;
	const auto linesOf = [](const std::string& body)
	{
		TArray<uint8> bytes;
		bytes.Append(reinterpret_cast<const uint8*>(body.data()), static_cast<int32>(body.size()));
		return CorvaneResult::toLines(CorvaneResult::toText(bytes)).Num();
	};
	constexpr size_t mostLines = 1000000;
	EXPECT_EQ(linesOf(repeated("x\r\n\r\n", mostLines)), static_cast<int32>(mostLines)) << "empty ones do not count";
	EXPECT_EQ(linesOf(repeated("x\r\n", mostLines + 1)), 0);
	EXPECT_EQ(linesOf(std::string(64 << 20, 'x')), 1);
	EXPECT_EQ(linesOf(std::string((64 << 20) + 64, 'x')), 0);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Display, "too long for the lines of a result"), 2);
}

TEST_F(Get, ReportsProgressAgainstTheAnnouncedLengthOrOneByte)
{
	const std::string megabyte(1 << 20, 'x');
	for (const bool bAnnounced : {true, false})
	{
		Lab::Origin origin;
		origin.at("/", megabyte, Lab::length({.isMissing = !bAnnounced}));
		const float percent = bAnnounced ? 100.0f : 100.0f * (1 << 20);
		EXPECT_TRUE(run(get(origin.url(), {}, "progress")).byteData == megabyte);
		ASSERT_FALSE(downloads.empty());
		EXPECT_FLOAT_EQ(downloads.back().size * downloads.back().percentDownload, 100.0f);
		EXPECT_FLOAT_EQ(downloads.back().megaBytesReceived, 1.0f);
		EXPECT_FLOAT_EQ(downloads.back().percentDownload, percent);
		EXPECT_EQ(downloads.back().requestID, "progress");
	}
}
