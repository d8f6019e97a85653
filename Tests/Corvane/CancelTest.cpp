#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"

namespace
{
	class Cancel : public ModuleFixture
	{
	protected:
		Gate never;
		/** Sends a first piece, then waits for ever. */
		RawServer server{[this](Connection& connection)
			{
				connection.readHead();
				connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\npiece");
				connection.waitFor(never);
			}};
	};
} // namespace

TEST_F(Cancel, EndsARunningRequestAsFailed)
{
	execute(get(server.url(), {}, "Run"));
	ASSERT_TRUE(loop.WaitFor([this] { return !downloads.empty(); }, patienceSeconds));
	UCorvaneBPLibrary::cancelRequest("rUN");
	EXPECT_TRUE(completions.empty()) << "never inside the call";
	drain();
	ASSERT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].statusCode, 500);
	EXPECT_EQ(completions[0].dataString, "No Response");
	EXPECT_EQ(completions[0].requestID, "Run");
}

TEST_F(Cancel, MayComeRightBehindTheStart)
{
	for (int round = 0; round < 50; ++round)
	{
		execute(get(server.url(), {}, "soon"));
		UCorvaneBPLibrary::cancelRequest("soon");
	}
	drain();
	EXPECT_EQ(completions.size(), 50u);
}

TEST_F(Cancel, OfAnIdThatDoesNotRunChangesNothing)
{
	for (const char* round : {"an unknown ID", "a finished one"})
	{
		Gate end;
		RawServer good(
			[&](Connection& connection)
			{
				connection.readHead();
				connection.send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n1");
				connection.waitFor(end);
				connection.send("2");
			});
		downloads.clear();
		UCorvaneBPLibrary::cancelRequest("later");
		execute(get(good.url(), {}, "later"));
		// A mark that the start had left would cancel the request at its first progress, while it waits for the gate.
		EXPECT_TRUE(loop.WaitFor([this] { return !downloads.empty() || !UCorvaneBPLibrary::hasPendingWork(); }, patienceSeconds));
		end.open();
		drain();
		ASSERT_FALSE(completions.empty()) << round;
		EXPECT_EQ(completions.back().statusCode, 200) << round;
	}
}

TEST_F(Cancel, FromAProgressHandlerStopsTheRequest)
{
	LogCapture log;
	UCorvaneBPLibrary::getCorvaneTarget()->onhttpFileDownloadDelegate.AddHandler(
		[](void* const*) { UCorvaneBPLibrary::cancelRequest("progress"); });
	execute(get(server.url(), {}, "progress"));
	drain();
	EXPECT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].statusCode, 500);
}

TEST_F(Cancel, AMarkFoundByTheWorkerCancelsARequestThatHasNoEntry)
{
	LogCapture log;
	Gate more;
	RawServer slow(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nx");
			connection.waitFor(more);
			connection.send("y");
			connection.waitFor(never);
		});
	RawServer quick(answering([](const std::string&) { return answer(200, "fine"); }));
	execute(get(slow.url(), {}, "twice"));
	ASSERT_TRUE(loop.WaitFor([this] { return !downloads.empty(); }, patienceSeconds));
	execute(get(quick.url(), {}, "TWICE")); // takes the entry of the ID, and its completion removes it
	ASSERT_TRUE(waitForCompletions(1));

	UCorvaneBPLibrary::cancelRequest("twice");
	more.open();
	drain();
	ASSERT_EQ(completions.size(), 2u);
	EXPECT_EQ(completions[0].statusCode, 200);
	EXPECT_EQ(completions[1].statusCode, 500);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "Request has been canceled. twice"), 1);
}

TEST_F(Cancel, HandlersMayStartCancelAndUnbindInsideAnEvent)
{
	RawServer good(answering([](const std::string&) { return answer(200, "fine"); }));
	FhttpRequestCompleteDelegate& event = UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate;
	int calls = 0;
	uint64 handler = 0;
	handler = event.AddHandler(
		[&](void* const*)
		{
			++calls;
			event.RemoveHandler(handler);
			execute(get(server.url(), {}, "inner"));
			UCorvaneBPLibrary::cancelRequest("inner");
		});
	execute(get(good.url(), {}, "outer"));
	ASSERT_TRUE(waitForCompletions(2));
	drain();
	EXPECT_EQ(calls, 1);
	ASSERT_EQ(completions.size(), 2u);
	EXPECT_EQ(completions[1].requestID, "inner");
	EXPECT_EQ(completions[1].statusCode, 500);
}
