#include "Calls.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "ServerKit.h"

namespace
{
	const std::string streamHead = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n";

	/** A stream of two pieces, or of one. */
	struct Stream
	{
		const char* name;
		std::string first, second; // bytes
		std::string events; // with a bar between them
		std::string result;
		bool bStaysOpen = false;
	};

	const Stream streams[] = {
		{"two events", streamHead + "data: one\n\n", "data: two\n\n", "data: one\n\n|data: two\n\n", "200 data: one\n\ndata: two\n\n"},
		{"cut in a character", streamHead + "caf\xC3", "\xA9!", "caf\uFFFD|\uFFFD!", "200 caf\u00e9!"},
		{"a redirect", answer(302, "data: a body longer than that of the target\n\n", "Location: /target\r\n"),
			answer(200, "data: target\n\n"), "data: target\n\n", "200 data: target\n\n"},
		{"falls silent", streamHead + "data: one\n\n", "", "data: one\n\n", "500 No Response", true},
		{"a refusal", answer(429, "slow down"), "", "slow down", "429 slow down"},
		{"a refusal that breaks off", "HTTP/1.1 429 X\r\nContent-Length: 9\r\n\r\nslow dow", "", "slow dow", "429 slow dow"},
	};

	class ServerSendEvents : public ModuleFixture
	{
	protected:
		ServerSendEvents()
			: ModuleFixture(settings())
		{
		}

		static FGameLoopSettings settings()
		{
			FGameLoopSettings settings;
			settings.http.activityTimeoutSeconds = 0.5;
			return settings;
		}

		bool waitForPieces(size_t number)
		{
			return until([this, number] { return serverSendEvents.size() >= number; });
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
		Gate next, never;
		RawServer origin(
			[&](Connection& connection)
			{
				connection.readHead();
				connection.send(stream.first);
				if (stream.first.find("Location") != std::string::npos)
				{
					connection.readHead();
				}
				else if (!stream.second.empty())
				{
					connection.waitFor(next);
				}
				connection.send(stream.second);
				if (stream.bStaysOpen)
				{
					connection.waitFor(never);
				}
			});
		execute(get(origin.url(), {}, "sse", true));
		ASSERT_TRUE(waitForPieces(1)) << stream.name;
		next.open();
		drain();
		EXPECT_EQ(takePieces("|"), stream.events) << stream.name;
		EXPECT_EQ(completions.back().brief(), stream.result) << stream.name;
	}
	EXPECT_EQ(completions.size(), std::size(streams));
	EXPECT_TRUE(downloads.empty());
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
	ASSERT_TRUE(waitForPieces(3));
	UCorvaneBPLibrary::cancelRequest("sse");
	drain();
	ASSERT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].brief(), "500 No Response");
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
