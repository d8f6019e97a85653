#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

namespace
{
	class Cancel : public ModuleFixture
	{
	protected:
		Cancel() { origin.at("/stuck", "12", Lab::stall({.at = {.byte = 1}})).at("/good", "fine"); }

		LogCapture log;
		Lab::Origin origin;
	};
} // namespace

TEST_F(Cancel, MayComeRightBehindTheStart)
{
	for (int round = 0; round < 50; ++round)
	{
		execute(get(origin.url("/stuck"), {}, "soon"));
		UCorvaneBPLibrary::cancelRequest("soon");
	}
	drain();
	EXPECT_EQ(completions.size(), 50u);
}

TEST_F(Cancel, OfAnIdThatDoesNotRunChangesNothing)
{
	for (const char* round : {"an unknown ID", "a finished one"})
	{
		Lab::Gate end;
		origin.at("/slow", "12", Lab::hold(end, {.byte = 1}));
		downloads.clear();
		UCorvaneBPLibrary::cancelRequest("later");
		execute(get(origin.url("/slow"), {}, "later"));
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
	execute(get(origin.url("/stuck"), {}, "progress"));
	drain();
	EXPECT_EQ(takeResults(), std::vector<std::string>{"progress: 500 No Response"});
}

TEST_F(Cancel, AMarkFoundByTheWorkerCancelsARequestThatHasNoEntry)
{
	Lab::Gate more;
	origin.at("/slow", std::string(1000, 'x'), Lab::hold(more, {.byte = 1}), Lab::stall({.at = {.byte = 2}}));
	execute(get(origin.url("/slow"), {}, "twice"));
	ASSERT_TRUE(until([this] { return !downloads.empty(); }));
	execute(get(origin.url("/good"), {}, "TWICE")); // takes the entry of the ID, and its completion removes it
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
			execute(get(origin.url("/stuck"), {}, "inner"));
			UCorvaneBPLibrary::cancelRequest("inner");
		});
	execute(get(origin.url("/good"), {}, "outer"));
	ASSERT_TRUE(waitForCompletions(2));
	drain();
	EXPECT_EQ(calls, 1);
	EXPECT_EQ(takeResults(), (std::vector<std::string>{"inner: 500 No Response", "outer: 200 fine"}));
}
