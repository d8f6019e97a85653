#include "CorvaneRequestCompleteObject.h"
#include "Host/Objects.h"
#include "ListeningNode.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"
#include "UObject/UObjectGlobals.h"

#include <atomic>
#include <filesystem>
#include <fstream>

namespace
{
	class Lifetime : public ModuleFixture
	{
	protected:
		RawServer server{answering([](const std::string&) { return answer(200, "hello"); })};
	};

	RawServer::Script answeringBehind(Gate& gate, const char* body)
	{
		return [&gate, body](Connection& connection)
		{
			connection.readHead();
			connection.waitFor(gate);
			connection.send(answer(200, body));
		};
	}

	/** Threads of this process that a request's worker has named. */
	size_t numWorkers()
	{
		size_t number = 0;
		for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
		{
			std::string name;
			std::getline(std::ifstream(task.path() / "comm"), name);
			number += name.starts_with("FCorvThread") ? 1u : 0u;
		}
		return number;
	}
} // namespace

TEST_F(Lifetime, ARecordKeepsItsCompletionObjectUntilItIsExecuted)
{
	TArray<FhttpRequest> requests = get(server.url());
	loop.CollectGarbage();
	EXPECT_EQ(run(requests).statusCode, 200);
}

TEST_F(Lifetime, ARecordThatIsThrownAwayFreesItsObject)
{
	const size_t before = HostObjects::NumObjects();
	get(server.url());
	loop.CollectGarbage();
	EXPECT_EQ(HostObjects::NumObjects(), before);
}

TEST_F(Lifetime, AFinishedRequestFreesItsObject)
{
	const size_t before = HostObjects::NumObjects();
	run(get(server.url()));
	// The HTTP thread may still be on its way out of the completion callback, where it pins the object.
	EXPECT_TRUE(loop.WaitFor(
		[&]
		{
			loop.CollectGarbage();
			return HostObjects::NumObjects() == before;
		},
		patienceSeconds));
}

TEST_F(Lifetime, ARunningRequestNeedsNoScriptToHoldIt)
{
	Gate gate;
	RawServer slow(answeringBehind(gate, "late"));
	execute(get(slow.url()));
	loop.CollectGarbage();
	gate.open();
	drain();
	ASSERT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].dataString, "late");
}

TEST_F(Lifetime, ARequestThatWaitsForItsServerHoldsNoThread)
{
	constexpr size_t requests = 20;
	Gate gate;
	std::atomic<size_t> asked{0};
	RawServer slow(
		[&](Connection& connection)
		{
			connection.readHead();
			++asked;
			connection.waitFor(gate);
			connection.send(answer(200, "late"));
		});
	const size_t before = numWorkers();
	for (size_t number = 0; number < requests; ++number)
	{
		execute(get(slow.url()));
	}
	ASSERT_TRUE(loop.WaitFor([&] { return asked == requests; }, patienceSeconds));
	EXPECT_EQ(numWorkers(), before);
	gate.open();
	drain();
	EXPECT_EQ(completions.size(), requests);
}

TEST_F(Lifetime, ARecordMayBeExecutedAgainFromItsOwnHandler)
{
	const TArray<FhttpRequest> requests = get(server.url(), {}, "again");
	constexpr size_t manyRounds = 300; // the worker of the run before is at times still on its way out
	size_t rounds = 0;
	UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate.AddHandler(
		[&](void* const*)
		{
			if (++rounds < manyRounds)
			{
				execute(requests);
			}
		});
	execute(requests);
	ASSERT_TRUE(waitForCompletions(manyRounds));
	drain();
	EXPECT_EQ(completions.size(), manyRounds);
	EXPECT_EQ(completions.back().statusCode, 200);
}

TEST_F(Lifetime, RunsOfOneObjectFollowEachOtherWithoutAGap)
{
	// The test stands in for dispatcher and HTTP module: each run starts while the one before is on its way out.
	const TArray<FhttpRequest> requests = get(server.url());
	UCorvaneRequestCompleteObject* object = requests[0].requestCompleteObject();
	for (size_t round = 1; round <= 3000; ++round)
	{
		ASSERT_TRUE(object->initCorv()) << "the result of the run before is out";
		if (round % 2 == 0)
		{
			loop.Tick(); // the last task of the run before is not meant for this one
			ASSERT_TRUE(object->IsRooted());
		}
		object->requestComplete(nullptr, nullptr, false);
		ASSERT_TRUE(waitForCompletions(round));
	}
	drain();
	EXPECT_EQ(completions.size(), 3000u);
	EXPECT_FALSE(object->IsRooted());
}

TEST_F(Lifetime, ARunningRecordIsNotStartedTwice)
{
	LogCapture log;
	Gate gate;
	RawServer slow(answeringBehind(gate, "once"));
	const TArray<FhttpRequest> requests = get(slow.url());
	execute(requests);
	execute(requests);
	gate.open();
	drain();
	EXPECT_EQ(completions.size(), 1u);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "still running"), 1);
}

TEST_F(Lifetime, ARecordWithoutCompletionObjectIsSkipped)
{
	LogCapture log;
	TArray<FhttpRequest> requests = get(server.url(), {}, "first");
	requests.Add(FhttpRequest());
	requests.Append(get(server.url(), {}, "last"));
	execute(requests);
	drain();
	EXPECT_EQ(completions.size(), 2u);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "UCorvaneBPLibrary: Missing Object instance (153)."), 1);
}

TEST_F(Lifetime, ANodeThatWaitsForTheIdTakesTheResult)
{
	UListeningNode* node = NewObject<UListeningNode>();
	node->AddToRoot();
	UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
	library->registerUAsyncNodeHttpRequest("Node", node);
	execute(get(server.url(), {}, "nODE"));
	drain();
	EXPECT_EQ(node->statusCodes, std::vector<int32>{200});
	EXPECT_TRUE(completions.empty());

	library->unregisterUAsyncNodeHttpRequest("node");
	EXPECT_EQ(run(get(server.url(), {}, "Node")).statusCode, 200);
	EXPECT_EQ(node->statusCodes.size(), 1u);
	node->RemoveFromRoot();
}

TEST_F(Lifetime, ANodeThatIsGoneLeavesTheResultToTheEvent)
{
	UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
	library->registerUAsyncNodeHttpRequest("gone", NewObject<UListeningNode>());
	loop.CollectGarbage();
	EXPECT_EQ(run(get(server.url(), {}, "gone")).statusCode, 200);
}

TEST_F(Lifetime, ANodeReplacedWhileTheAnswerIsOnItsWayDoesNotTakeIt)
{
	UListeningNode* first = NewObject<UListeningNode>();
	UListeningNode* second = NewObject<UListeningNode>();
	first->AddToRoot();
	second->AddToRoot();
	UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
	library->registerUAsyncNodeHttpRequest("id", first);
	execute(get(server.url(), {}, "id"));
	// Without a tick the worker looks the node up and posts, and the result then waits for the game thread.
	ASSERT_TRUE(waitFor([] { return !UCorvaneBPLibrary::hasPendingWork(); }));
	library->registerUAsyncNodeHttpRequest("id", second);
	drain();
	EXPECT_TRUE(first->statusCodes.empty() && second->statusCodes.empty());
	EXPECT_EQ(completions.size(), 1u);
	first->RemoveFromRoot();
	second->RemoveFromRoot();
}
