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

TEST_F(Lifetime, ARecordOfAKindThatDoesNotExistIsRefused)
{
	LogCapture log;
	for (const int type : {10, 255})
	{
		TArray<FhttpRequest> requests = get(server.url());
		requests[0].requestType = static_cast<EHTTPCorvRequestType>(type);
		EXPECT_EQ(run(requests).statusCode, 400);
	}
	EXPECT_TRUE(server.requests().empty());
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "There are no requests of type"), 2);
	EXPECT_EQ(
		log.count("LogTemp", ELogVerbosity::Error, "could not be started. Request " + completions[0].requestID + ", http://127.0.0.1:"), 1);
}

TEST_F(Lifetime, ARecordIsStartedWithItsOwnLibraryWhicheverIsTheLatest)
{
	LogCapture log;
	TArray<FhttpRequest> ofFirst = get(server.url(), {}, "first");
	TStrongObjectPtr<UCorvaneBPLibrary> second(NewObject<UCorvaneBPLibrary>());
	ASSERT_EQ(UCorvaneBPLibrary::getCorvaneTarget(), second.Get());
	const TArray<FhttpRequest> ofSecond = get(server.url(), {}, "second");
	execute(ofFirst);
	drain();
	ASSERT_EQ(completions.size(), 1u) << "the event of the first, and the loop waits for it";
	EXPECT_EQ(completions[0].statusCode, 200);

	Gate never;
	RawServer silent(answeringBehind(never, ""));
	TArray<FhttpRequest> unanswered = ofFirst;
	unanswered[0].url = text(silent.url());
	execute(unanswered);
	UCorvaneBPLibrary::cancelRequest("first");
	drain();
	EXPECT_EQ(completions.back().statusCode, 500);

	second.Reset();
	loop.CollectGarbage();
	ASSERT_EQ(UCorvaneBPLibrary::getCorvaneTarget(), nullptr) << "the latest is gone";
	TArray<FhttpRequest> both = ofSecond;
	both.Append(ofFirst);
	execute(both);
	drain();
	EXPECT_EQ(completions.size(), 3u);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "UCorvaneBPLibrary: Missing Object instance (153)."), 1);
	EXPECT_FALSE(ofSecond[0].requestCompleteObject()->initCorv());
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "UCorvaneBPLibrary: Missing Object instance (12)."), 1);
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

TEST_F(Lifetime, AResultBelongsToTheNodeThatHadTheIdAtTheStart)
{
	UCorvaneBPLibrary* library = UCorvaneBPLibrary::getCorvaneTarget();
	struct Case
	{
		const char* name;
		bool bHasNode; // when the request starts
		bool bGivesUp, bReplaced; // meanwhile
		size_t first, second, events;
	};
	const Case cases[] = {{"nothing happens", true, false, false, 1, 0, 0}, {"another node takes the ID", true, false, true, 1, 0, 0},
		{"it gives up the ID", true, true, false, 0, 0, 1}, {"it gives up the ID to another", true, true, true, 0, 0, 1},
		{"a node comes later", false, false, true, 0, 0, 1}};
	for (const Case& c : cases)
	{
		completions.clear();
		UListeningNode* nodes[] = {NewObject<UListeningNode>(), NewObject<UListeningNode>()};
		const TStrongObjectPtr<UObject> held[] = {TStrongObjectPtr<UObject>(nodes[0]), TStrongObjectPtr<UObject>(nodes[1])};
		c.bHasNode ? library->registerUAsyncNodeHttpRequest("id", nodes[0]) : library->unregisterUAsyncNodeHttpRequest("id");
		execute(get(server.url(), {}, "ID"));
		if (c.bGivesUp)
		{
			library->unregisterUAsyncNodeHttpRequest("id");
		}
		if (c.bReplaced)
		{
			library->registerUAsyncNodeHttpRequest("id", nodes[1]);
		}
		drain();
		EXPECT_EQ(nodes[0]->statusCodes.size(), c.first) << c.name;
		EXPECT_EQ(nodes[1]->statusCodes.size(), c.second) << c.name;
		EXPECT_EQ(completions.size(), c.events) << c.name;
	}
}
