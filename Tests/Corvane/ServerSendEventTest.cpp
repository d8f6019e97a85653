#include "Calls.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "ServerKit.h"

namespace
{
	const std::string streamHead = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n";

	struct Stream
	{
		std::string first, second; // bytes of the server; between them the first event arrives
		std::string events; // with a bar between them
		std::string result;
	};

	const Stream streams[] = {
		{streamHead + "data: one\n\n", "data: two\n\n", "data: one\n\n|data: two\n\n", "200 data: one\n\ndata: two\n\n"},
		{streamHead + "caf\xC3", "\xA9!", "caf\uFFFD|\uFFFD!", "200 caf\u00e9!"}, // cut in a character
		{answer(429, "slow down"), "", "slow down", "429 slow down"},
		{"HTTP/1.1 429 X\r\nContent-Length: 9\r\n\r\nslow dow", "", "slow dow", "429 slow dow"},
		{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\ndata", "", "data", "500 No Response"},
	};

	class ServerSendEvents : public ModuleFixture
	{
	protected:
		ServerSendEvents()
			: ModuleFixture(impatient(0.5))
		{
		}

		/** @return the pieces that have come since the last call. */
		std::string takePieces(const char* between = "")
		{
			std::string all;
			for (const ServerSendEvent& event : std::exchange(serverSendEvents, {}))
			{
				EXPECT_EQ(event.requestID, "sse");
				all += (all.empty() ? "" : between) + event.response;
			}
			return all;
		}

		LogCapture log;
	};
} // namespace

TEST_F(ServerSendEvents, ComeInPiecesAndWithoutProgress)
{
	for (const Stream& stream : streams)
	{
		Gate next;
		RawServer origin(saying(stream.first, &next, stream.second));
		execute(get(origin.url(), {}, "sse", true));
		ASSERT_TRUE(until([this] { return !serverSendEvents.empty(); })) << stream.result;
		next.open();
		drain();
		EXPECT_EQ(takePieces("|"), stream.events);
		EXPECT_EQ(takeResults(), std::vector<std::string>{"sse: " + stream.result});
	}
	EXPECT_TRUE(downloads.empty());
}

TEST_F(ServerSendEvents, OfARedirectAreThoseOfItsTargetAndSilenceIsAFailure)
{
	Gate never;
	const std::string away = answer(302, "data: a body longer than that of the target\n\n", "Location: /target\r\n");
	RawServer origin(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send(away);
			saying(streamHead + "data: target\n\n", &never)(connection);
		});
	EXPECT_EQ(run(get(origin.url(), {}, "sse", true)).brief(), "500 No Response");
	EXPECT_EQ(takePieces(), "data: target\n\n");
}

TEST_F(ServerSendEvents, OfAPostAndOfARecordExecutedAgainBeginWithTheFirstByte)
{
	RawServer origin(answering([](const std::string&) { return answer(200, "data: one\n\n"); }));
	const TArray<FhttpRequest> records = build("CreateHttpRequestPOST", {.otherHttpRequests = get(origin.url(), {}, "sse", true),
																			.url = text(origin.url()),
																			.bindServerSendEvent = true,
																			.optionalRequestID = "sse"});
	for (int round = 0; round < 2; ++round)
	{
		execute(records);
		drain();
		EXPECT_EQ(takePieces(), "data: one\n\ndata: one\n\n");
	}
}

TEST_F(ServerSendEvents, OfAnEndlessStreamEndWithACancel)
{
	RawServer origin(
		[](Connection& connection)
		{
			connection.readHead();
			for (connection.send(streamHead);;)
			{
				connection.send("data: again\n\n"); // ends when the client hangs up
			}
		});
	execute(get(origin.url(), {}, "sse", true));
	ASSERT_TRUE(until([this] { return serverSendEvents.size() >= 3; }));
	UCorvaneBPLibrary::cancelRequest("sse");
	drain();
	EXPECT_EQ(takeResults(), std::vector<std::string>{"sse: 500 No Response"});
}

TEST_F(ServerSendEvents, BringEachByteOnceAndInOrderWhileTheBodyGrows)
{
	std::string body;
	for (size_t number = 0; number < 50000; ++number)
	{
		body += "data: " + std::to_string(number * number) + "\n\n";
	}
	RawServer origin(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send(streamHead);
			for (size_t sent = 0, piece = 1; sent < body.size(); sent += piece, piece = piece % 4000 + 37)
			{
				connection.send(body.substr(sent, piece));
			}
		});
	const Completion result = run(get(origin.url(), {}, "sse", true));
	EXPECT_TRUE(takePieces() == body);
	EXPECT_TRUE(result.brief() == "200 " + body && result.byteData == body);
	EXPECT_EQ(log.count("LogHttp", ELogVerbosity::Warning), 0) << "a running response is left alone";
}
