#include "Calls.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

namespace
{
	const Lab::Behaviour untilClose = Lab::length({.isMissing = true});
	const Lab::Behaviour breaksOff = Lab::length({.says = 9});

	struct Stream
	{
		int code;
		Lab::Behaviour ending;
		std::string first, second; // bytes of the server; between them the first event arrives
		std::string events; // with a bar between them
		std::string result;
	};

	const Stream streams[] = {
		{200, untilClose, "data: one\n\n", "data: two\n\n", "data: one\n\n|data: two\n\n", "200 data: one\n\ndata: two\n\n"},
		{200, untilClose, "caf\xC3", "\xA9!", "caf\uFFFD|\uFFFD!", "200 caf\u00e9!"}, // cut in a character
		{429, Lab::closing(), "slow down", "", "slow down", "429 slow down"},
		{429, breaksOff, "slow dow", "", "slow dow", "429 slow dow"},
		{200, breaksOff, "data", "", "data", "500 No Response"},
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

		Lab::Origin origin;
		LogCapture log;
	};
} // namespace

TEST_F(ServerSendEvents, ComeInPiecesAndWithoutProgress)
{
	for (const Stream& stream : streams)
	{
		Lab::Gate next;
		origin.at("/", Lab::status({.code = stream.code, .text = stream.first + stream.second}), stream.ending,
			Lab::hold(next, {.byte = stream.first.size()}));
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
	origin.at("/", "data: a body longer than that of the target\n\n", Lab::redirect({.to = "/target"}));
	origin.at("/target", "data: target\n\n", untilClose, Lab::stall({.at = {.byte = 14}}));
	EXPECT_EQ(run(get(origin.url(), {}, "sse", true)).brief(), "500 No Response");
	EXPECT_EQ(takePieces(), "data: target\n\n");
}

TEST_F(ServerSendEvents, OfAPostAndOfARecordExecutedAgainBeginWithTheFirstByte)
{
	origin.at("/", "data: one\n\n");
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
	origin.at("/", Lab::events({.number = 0}));
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
	std::vector<size_t> sizes;
	for (size_t sent = 0, piece = 1; sent < body.size(); sent += piece, piece = piece % 4000 + 37)
	{
		sizes.push_back(piece);
	}
	origin.at("/", body, untilClose, Lab::pieces(sizes));
	const Completion result = run(get(origin.url(), {}, "sse", true));
	EXPECT_TRUE(takePieces() == body);
	EXPECT_TRUE(result.brief() == "200 " + body && result.byteData == body);
	EXPECT_EQ(log.count("LogHttp", ELogVerbosity::Warning), 0) << "a running response is left alone";
}
