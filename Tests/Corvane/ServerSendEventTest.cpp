#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"

#include <gmock/gmock.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;

namespace
{
	constexpr const char* streamHead = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n";

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
			return loop.WaitFor([this, number] { return serverSendEvents.size() >= number; }, patienceSeconds);
		}

		void expectOneCompletion(int32 statusCode, const std::string& dataString)
		{
			ASSERT_EQ(completions.size(), 1u);
			EXPECT_EQ(completions[0].statusCode, statusCode);
			EXPECT_EQ(completions[0].dataString, dataString);
		}
	};
} // namespace

TEST_F(ServerSendEvents, ComeInPiecesAndWithoutProgress)
{
	Gate first, second;
	RawServer origin(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send(std::string(streamHead) + "data: one\n\n");
			connection.waitFor(first);
			connection.send("data: two\n\n");
			connection.waitFor(second);
		});
	execute(get(origin.url(), {}, "sse", true));
	ASSERT_TRUE(waitForPieces(1));
	first.open();
	ASSERT_TRUE(waitForPieces(2));
	second.open();
	drain();
	EXPECT_THAT(
		serverSendEvents, ElementsAre(AllOf(Field(&ServerSendEvent::response, "data: one\n\n"), Field(&ServerSendEvent::requestID, "sse")),
							  Field(&ServerSendEvent::response, "data: two\n\n")));
	EXPECT_TRUE(downloads.empty());
	ASSERT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].dataString, "data: one\n\ndata: two\n\n");
}

TEST_F(ServerSendEvents, OfAPostAndOfARecordExecutedAgainBeginWithTheFirstByte)
{
	RawServer origin(answering([](const std::string&) { return answer(200, "data: one\n\n"); }));
	TArray<FhttpRequest> records = get(origin.url(), {}, "", true);
	FString id;
	UCorvaneBPLibrary::CreateHttpRequestPOST(records, text(origin.url()), {}, {}, "", true, records, id);
	for (int round = 0; round < 2; ++round)
	{
		serverSendEvents.clear();
		execute(records);
		drain();
		std::string together;
		for (const ServerSendEvent& event : serverSendEvents)
		{
			together += event.response;
		}
		EXPECT_EQ(together, "data: one\n\ndata: one\n\n");
	}
}

TEST_F(ServerSendEvents, MayBeCutInsideACharacterThatTheWholeBodyShows)
{
	Gate first;
	RawServer origin(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send(std::string(streamHead) + "caf\xC3");
			connection.waitFor(first);
			connection.send("\xA9!");
		});
	execute(get(origin.url(), {}, "", true));
	ASSERT_TRUE(waitForPieces(1));
	first.open();
	drain();
	EXPECT_THAT(
		serverSendEvents, ElementsAre(Field(&ServerSendEvent::response, "caf\uFFFD"), Field(&ServerSendEvent::response, "\uFFFD!")));
	expectOneCompletion(200, "caf\u00e9!");
}

TEST_F(ServerSendEvents, OfARedirectAreThoseOfItsTarget)
{
	RawServer origin(answering(
		[](const std::string& head)
		{
			return targetOf(head) == "/" ? answer(302, "data: a body longer than that of the target\n\n", "Location: /target\r\n")
										 : answer(200, "data: target\n\n");
		}));
	execute(get(origin.url(), {}, "", true));
	drain();
	EXPECT_THAT(serverSendEvents, ElementsAre(Field(&ServerSendEvent::response, "data: target\n\n")));
	expectOneCompletion(200, "data: target\n\n");
}

TEST_F(ServerSendEvents, OfAStreamThatFallsSilentEndInAFailure)
{
	LogCapture log;
	Gate never;
	RawServer origin(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send(std::string(streamHead) + "data: one\n\n");
			connection.waitFor(never);
		});
	execute(get(origin.url(), {}, "", true));
	drain();
	EXPECT_THAT(serverSendEvents, ElementsAre(Field(&ServerSendEvent::response, "data: one\n\n")));
	expectOneCompletion(500, "No Response");
}

TEST_F(ServerSendEvents, OfAnEndlessStreamEndWithACancel)
{
	RawServer origin(
		[](Connection& connection)
		{
			connection.readHead();
			connection.send(streamHead);
			for (;;)
			{
				connection.send("data: again\n\n"); // ends when the client hangs up
			}
		});
	execute(get(origin.url(), {}, "endless", true));
	ASSERT_TRUE(waitForPieces(3));
	UCorvaneBPLibrary::cancelRequest("endless");
	drain();
	expectOneCompletion(500, "No Response");
}

TEST_F(ServerSendEvents, BringEachByteOnceAndInOrderWhileTheBodyGrows)
{
	LogCapture log;
	constexpr size_t events = 50000;
	std::string body;
	for (size_t number = 0; number < events; ++number)
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
	execute(get(origin.url(), {}, "", true));
	drain();
	std::string together;
	for (const ServerSendEvent& event : serverSendEvents)
	{
		together += event.response;
	}
	EXPECT_TRUE(together == body);
	expectOneCompletion(200, body);
	EXPECT_EQ(completions[0].byteData.size(), body.size());
	EXPECT_EQ(log.count("LogHttp", ELogVerbosity::Warning), 0) << "a running response is left alone";
}

TEST_F(ServerSendEvents, OfARefusalComeWithItsCodeAndText)
{
	LogCapture log;
	for (const bool whole : {true, false})
	{
		completions.clear();
		RawServer origin(
			[&](Connection& connection)
			{
				connection.readHead();
				const std::string page = answer(429, "slow down");
				connection.send(whole ? page : page.substr(0, page.size() - 1));
			});
		execute(get(origin.url(), {}, "", true));
		drain();
		expectOneCompletion(429, whole ? "slow down" : "slow dow");
	}
}
