#include "CorvaneRequestCompleteObject.h"
#include "Host/Objects.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

#include <filesystem>
#include <fstream>

namespace
{
	class Lifetime : public ModuleFixture
	{
	protected:
		Lifetime() { origin.at("/quick", "hello").at("/slow", "late", Lab::hold(gate)); }

		int errors(const char* part) const { return log.count("LogTemp", ELogVerbosity::Error, part); }

		LogCapture log;
		Lab::Gate gate;
		Lab::Origin origin;
	};

	using Results = std::vector<std::string>;
	constexpr const char* missing = "UCorvaneBPLibrary: Missing Object instance (153).";

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

TEST_F(Lifetime, ARecordHoldsItsObjectUntilItHasRunOrIsThrownAway)
{
	const size_t before = HostObjects::NumObjects();
	get(origin.url("/quick"));
	TArray<FhttpRequest> kept = get(origin.url("/quick"));
	loop.CollectGarbage();
	EXPECT_EQ(HostObjects::NumObjects(), before + 1);
	EXPECT_EQ(run(std::move(kept)).statusCode, 200);
	EXPECT_TRUE(collectUntil(before));
}

TEST_F(Lifetime, ARequestThatWaitsForItsServerNeedsNobodyToHoldItAndNoThread)
{
	constexpr size_t requests = 20;
	const size_t before = numWorkers();
	for (size_t number = 0; number < requests; ++number)
	{
		execute(get(origin.url("/slow"), {}, "id"));
	}
	loop.CollectGarbage();
	ASSERT_TRUE(until([&] { return origin.log().size() == requests; }));
	EXPECT_EQ(numWorkers(), before);
	gate.open();
	drain();
	EXPECT_EQ(takeResults(), Results(requests, "id: 200 late"));
}

TEST_F(Lifetime, ARecordMayBeExecutedAgainFromItsOwnHandler)
{
	const TArray<FhttpRequest> requests = get(origin.url("/quick"), {}, "again");
	constexpr size_t manyRounds = 300; // the worker of the run before is at times still on its way out
	size_t rounds = 0;
	library().onhttpRequestCompleteDelegate.AddHandler(
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
	EXPECT_EQ(takeResults(), Results(manyRounds, "again: 200 hello"));
}

TEST_F(Lifetime, RunsOfOneObjectFollowEachOtherWithoutAGap)
{
	// The test stands in for dispatcher and HTTP module: each run starts while the one before is on its way out.
	const TArray<FhttpRequest> requests = get(origin.url("/quick"));
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

TEST_F(Lifetime, ARecordThatCannotBeStartedTouchesNoOther)
{
	TArray<FhttpRequest> requests = get(origin.url("/slow"), {}, "running");
	requests.Append(TArray<FhttpRequest>(requests));
	requests.Add(FhttpRequest());
	for (const int type : {10, 255})
	{
		requests.Append(get(origin.url("/quick"), {}, "unknown"));
		requests.Last().requestType = static_cast<EHTTPCorvRequestType>(type);
	}
	requests.Append(get(origin.url("/quick"), {}, "last"));
	execute(requests);
	gate.open();
	drain();
	EXPECT_EQ(takeResults(), (Results{"last: 200 hello", "running: 200 late", "unknown: 400 ", "unknown: 400 "}));
	EXPECT_EQ(origin.log().size(), 2u);
	EXPECT_EQ(errors("still running"), 1);
	EXPECT_EQ(errors(missing), 1);
	EXPECT_EQ(errors("There are no requests of type"), 2);
	EXPECT_EQ(errors("could not be started. Request unknown, http://127.0.0.1:"), 2);
}

TEST_F(Lifetime, ARecordIsStartedWithItsOwnLibraryWhicheverIsTheLatest)
{
	const TArray<FhttpRequest> ofFirst = get(origin.url("/quick"), {}, "first");
	TStrongObjectPtr<UCorvaneBPLibrary> second(NewObject<UCorvaneBPLibrary>());
	ASSERT_EQ(UCorvaneBPLibrary::getCorvaneTarget(), second.Get());
	const TArray<FhttpRequest> ofSecond = get(origin.url("/quick"), {}, "second");
	EXPECT_EQ(run(ofFirst).statusCode, 200) << "the event of the first, and the loop waits for it";

	TArray<FhttpRequest> unanswered = ofFirst;
	unanswered[0].url = text(origin.url("/slow"));
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
	EXPECT_EQ(errors(missing), 1);
	EXPECT_FALSE(ofSecond[0].requestCompleteObject()->initCorv());
	EXPECT_EQ(errors("UCorvaneBPLibrary: Missing Object instance (12)."), 1);
}
