#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"
#include "Runs/Result.h"
#include "UAsyncNodeCorv.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::Pair;

namespace
{
	constexpr const char* defaultUserAgent =
		"UE4 Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) Chrome/69.0.3497.81 Safari/537.36";

	class Get : public ModuleFixture
	{
	protected:
		RawServer server{answering([](const std::string&) { return answer(200, "hello", "X-Test: yes\r\n"); })};
	};
} // namespace

TEST_F(Get, GoesOverTheWireAsDescribed)
{
	run(get(server.url("/a b?x=1%20").replace(server.url("/a b").find(' '), 1, "+"), {{"X-First", "1"}, {"X-Second", u"zwei ü"}}));
	EXPECT_THAT(server.requests(),
		ElementsAre("GET /a+b?x=1%20 HTTP/1.1\r\n" + firstHeaders(server.authority()) + "User-Agent: " + defaultUserAgent +
					"\r\nContent-Type: application/x-www-form-urlencoded\r\nX-First: 1\r\nX-Second: zwei ü\r\nContent-Length: 0\r\n\r\n"));
}

TEST_F(Get, ReplacesDefaultHeadersInTheirPlace)
{
	run(get(server.url(), {{"content-type", "text/plain"}, {"USER-AGENT", "mine"}}));
	EXPECT_THAT(server.requests(), ElementsAre("GET / HTTP/1.1\r\n" + firstHeaders(server.authority()) +
											   "USER-AGENT: mine\r\ncontent-type: text/plain\r\nContent-Length: 0\r\n\r\n"));
}

TEST_F(Get, ArrivesAsOneEventOnTheGameThread)
{
	const Completion result = run(get(server.url(), {}, "my id"));
	EXPECT_EQ(result.statusCode, 200);
	EXPECT_EQ(result.dataString, "hello");
	EXPECT_EQ(result.byteData, "hello");
	EXPECT_EQ(result.requestID, "my id");
	EXPECT_THAT(result.dataArray, ElementsAre("hello"));
	EXPECT_THAT(result.header, testing::Contains("X-Test: yes"));
}

TEST_F(Get, IsNotDeliveredInsideTheCall)
{
	execute(get(server.url()));
	EXPECT_TRUE(completions.empty());
	drain();
	EXPECT_EQ(completions.size(), 1u);
}

TEST_F(Get, ReadsTheBodyAsTextAndLines)
{
	struct Case
	{
		const char* name;
		std::string body;
		std::string text;
		std::vector<std::string> lines;
	};
	const Case cases[] = {
		{"lines", "a\r\n\r\nb\nc\r\n", "a\r\n\r\nb\nc\r\n", {"a", "b\nc"}},
		{"empty", "", "", {}},
		{"not UTF-8", "z\xFF\xE2\x82", "z\uFFFD\uFFFD\uFFFD", {"z\uFFFD\uFFFD\uFFFD"}},
		{"zero inside", std::string("a\0b", 3), std::string("a\0b", 3), {std::string("a\0b", 3)}},
	};
	for (const Case& c : cases)
	{
		RawServer origin(answering([&](const std::string&) { return answer(200, c.body); }));
		const Completion result = run(get(origin.url()));
		EXPECT_EQ(result.statusCode, 200) << c.name;
		EXPECT_EQ(result.byteData, c.body) << c.name;
		EXPECT_EQ(result.dataString, c.text) << c.name;
		EXPECT_EQ(result.dataArray, c.lines) << c.name;
	}
}

TEST_F(Get, BringsNoLinesWhereThereAreTooMany)
{
	LogCapture log;
	const auto linesOf = [](std::string piece, size_t number)
	{
		std::string body;
		while (number-- > 0)
		{
			body += piece;
		}
		TArray<uint8> bytes;
		bytes.Append(reinterpret_cast<const uint8*>(body.data()), static_cast<int32>(body.size()));
		return CorvaneResult::toLines(CorvaneResult::toText(bytes)).Num();
	};
	constexpr size_t mostLines = 1000000;
	EXPECT_EQ(linesOf("x\r\n\r\n", mostLines), static_cast<int32>(mostLines)) << "empty ones do not count";
	EXPECT_EQ(linesOf("x\r\n", mostLines + 1), 0);
	EXPECT_EQ(linesOf(std::string(1 << 20, 'x'), 64), 1);
	EXPECT_EQ(linesOf(std::string((1 << 20) + 1, 'x'), 64), 0);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Display, "too long for the lines of a result"), 2);

	RawServer origin(answering(
		[](const std::string&)
		{
			std::string body;
			for (size_t line = 0; line <= mostLines; ++line)
			{
				body += "y\r\n";
			}
			return answer(200, body);
		}));
	const Completion result = run(get(origin.url()));
	EXPECT_EQ(result.byteData.size(), 3 * (mostLines + 1));
	EXPECT_TRUE(result.dataString == result.byteData && result.dataArray.empty());
}

TEST_F(Get, ReportsProgressAgainstTheAnnouncedLength)
{
	const std::string body(1 << 20, 'x');
	RawServer origin(answering([&](const std::string&) { return answer(200, body); }));
	run(get(origin.url(), {}, "progress"));
	ASSERT_FALSE(downloads.empty());
	EXPECT_FLOAT_EQ(downloads.back().size, 1.0f);
	EXPECT_FLOAT_EQ(downloads.back().megaBytesReceived, 1.0f);
	EXPECT_FLOAT_EQ(downloads.back().percentDownload, 100.0f);
	EXPECT_EQ(downloads.back().requestID, "progress");
}

TEST_F(Get, ReportsProgressAgainstOneByteWhenTheLengthIsUnknown)
{
	RawServer origin(
		[](Connection& connection)
		{
			connection.readHead();
			connection.send("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n12345");
		});
	EXPECT_EQ(run(get(origin.url())).dataString, "12345");
	ASSERT_FALSE(downloads.empty());
	EXPECT_FLOAT_EQ(downloads.back().percentDownload, 500.0f);
}

TEST_F(Get, RunsManyAtOnceWithOneCompletionEach)
{
	constexpr int number = 500;
	TArray<FhttpRequest> requests;
	for (int at = 0; at < number; ++at)
	{
		FString id;
		UCorvaneBPLibrary::CreateHttpRequestGET(requests, text(server.url()), {}, FString(std::to_string(at).c_str()), false, requests, id);
	}
	ASSERT_EQ(requests.Num(), number);
	execute(requests);
	drain();
	std::map<std::string, int> seen;
	for (const Completion& completion : completions)
	{
		EXPECT_EQ(completion.statusCode, 200);
		++seen[completion.requestID];
	}
	EXPECT_EQ(seen.size(), static_cast<size_t>(number));
	EXPECT_EQ(completions.size(), static_cast<size_t>(number));
}

TEST_F(Get, ReturnsHttpErrorsAsTheServerSentThem)
{
	RawServer origin(answering([](const std::string& head) { return answer(std::stoi(targetOf(head).substr(1)), "page"); }));
	for (const int code : {400, 404, 451, 500, 503})
	{
		const Completion result = run(get(origin.url("/" + std::to_string(code))));
		EXPECT_EQ(result.statusCode, code);
		EXPECT_EQ(result.dataString, "page");
	}
}
