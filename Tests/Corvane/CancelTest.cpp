#include "LogCapture.h"
#include "ModuleFixture.h"
#include "ServerKit.h"

namespace
{
	class Cancel : public ModuleFixture
	{
	protected:
		const std::string begun = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n1";
		LogCapture log;
		Gate never;
		RawServer server{saying(begun, &never)};
		RawServer good{answering([](const std::string&) { return answer(200, "fine"); })};
	};
} // namespace

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
		RawServer slow(saying(begun, &end, "2"));
		downloads.clear();
		UCorvaneBPLibrary::cancelRequest("later");
		execute(get(slow.url(), {}, "later"));
		// A mark that the start had left would cancel the request at its first progress, while it waits for the gate.
		EXPECT_TRUE(until([this] { return !downloads.empty() || !UCorvaneBPLibrary::hasPendingWork(); }));
		end.open();
		drain();
		EXPECT_EQ(takeResults(), std::vector<std::string>{"later: 200 12"}) << round;
	}
}

TEST_F(Cancel, FromAProgressHandlerStopsTheRequest)
{
	library().onhttpFileDownloadDelegate.AddHandler(
		[this](void* const*)
		{
			UCorvaneBPLibrary::cancelRequest("PROGRESS");
			EXPECT_TRUE(completions.empty()) << "never inside the call";
		});
	execute(get(server.url(), {}, "progress"));
	drain();
	EXPECT_EQ(takeResults(), std::vector<std::string>{"progress: 500 No Response"});
}

TEST_F(Cancel, AMarkFoundByTheWorkerCancelsARequestThatHasNoEntry)
{
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
	execute(get(slow.url(), {}, "twice"));
	ASSERT_TRUE(until([this] { return !downloads.empty(); }));
	execute(get(good.url(), {}, "TWICE")); // takes the entry of the ID, and its completion removes it
	ASSERT_TRUE(waitForCompletions(1));

	UCorvaneBPLibrary::cancelRequest("twice");
	more.open();
	drain();
	EXPECT_EQ(takeResults(), (std::vector<std::string>{"TWICE: 200 fine", "twice: 500 No Response"}));
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "Request has been canceled. twice"), 1);
}

TEST_F(Cancel, HandlersMayStartCancelAndUnbindInsideAnEvent)
{
	FhttpRequestCompleteDelegate& event = library().onhttpRequestCompleteDelegate;
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
	EXPECT_EQ(takeResults(), (std::vector<std::string>{"inner: 500 No Response", "outer: 200 fine"}));
}
