#include "Host/Objects.h"
#include "NodeFixture.h"
#include "UAsyncNodeHttpRequest.h"
#include "UObject/UObjectGlobals.h"

#include <malloc.h>

namespace
{
	/** The classes of nodes that take an ID from their caller, with requests of one step and of several. */
	class NodeLife : public NodeFixture, public testing::WithParamInterface<const char*>
	{
	protected:
		UAsyncNodeCorv* make(const NodeOrigin& origin, const FString& id) { return nodeKind(GetParam()).make(pins(origin), id); }
		bool isRootedKind() const { return !std::string_view(GetParam()).ends_with("Download"); }
		bool hasSteps() const { return std::string_view(GetParam()) == "GoogleDrive" || std::string_view(GetParam()) == "LowRamDownload"; }
	};

	using Nodes = NodeFixture;
} // namespace

TEST_P(NodeLife, TwoOfOneIdHaveTheirOwnOutcomes)
{
	for (const bool bCancels : {true, false})
	{
		Lab::Gate own;
		NodeOrigin origin(Lab::hold(own));
		outcomes.clear();
		const size_t before = HostObjects::NumObjects();
		const UAsyncNodeCorv& earlier = startHeld(make(origin, "Same"));
		ASSERT_TRUE(until([&] { return origin.running() == 1; }));
		for (int times = 0; bCancels && times < 2; ++times)
		{
			UCorvaneBPLibrary::cancelRequest("same");
		}
		startHeld(make(origin, "sAME"));
		EXPECT_EQ(earlier.IsRooted(), isRootedKind()) << "its result is still to come";
		own.open();
		drain();
		EXPECT_EQ(outcomes.size(), 2u);
		std::map<std::string, std::string> outputs;
		for (const Outcome& outcome : outcomes)
		{
			outputs[outcome.requestID()] = outcome.output;
		}
		EXPECT_EQ(outputs.size(), 2u);
		EXPECT_TRUE(!bCancels || (outputs["Same"] == "OnFail" && outputs["sAME"] == "OnSuccess"));
		EXPECT_TRUE(completions.empty());
		held.clear();
		EXPECT_TRUE(collectUntil(before));
	}
}

TEST_P(NodeLife, OneThatWasNeverActivatedLosesItsFactorysRootToALaterOne)
{
	NodeOrigin origin;
	UAsyncNodeCorv& earlier = *make(origin, "Same");
	earlier.AddToRoot();
	startHeld(make(origin, "same"));
	EXPECT_EQ(earlier.IsRooted(), !isRootedKind()) << "the root of the other kind is its owner's";
	earlier.RemoveFromRoot();
	drain();
}

TEST_P(NodeLife, CollectionSparesARootedNodeAndSendsOthersResultsToTheEvent)
{
	for (const bool bAnswerIsPosted : {false, true})
	{
		if (bAnswerIsPosted && (callbacksNeedTicks || hasSteps()))
		{
			continue; // no answer, or not the last, gets on its way without a tick
		}
		Lab::Gate own;
		NodeOrigin origin(Lab::hold(own));
		outcomes.clear();
		completions.clear();
		start(make(origin, "Collected"));
		if (bAnswerIsPosted)
		{
			own.open();
			ASSERT_TRUE(waitFor([] { return !UCorvaneBPLibrary::hasPendingWork(); }));
		}
		loop.CollectGarbage();
		own.open();
		drain();
		EXPECT_EQ(outcomes.size(), isRootedKind() ? 1u : 0u);
		EXPECT_EQ(completions.size(), isRootedKind() ? 0u : 1u);
		EXPECT_EQ(library().getUAsyncNodeHttpRequest("Collected"), nullptr);
	}
	EXPECT_EQ(dir.exists("download.bin"), !isRootedKind()) << "the file is written all the same";
}

TEST_P(NodeLife, AnOutcomeMayStartTheNextNodeOfTheSameId)
{
	constexpr size_t rounds = 30;
	NodeOrigin origin;
	duringOutcome = [&](UAsyncNodeCorv&)
	{
		if (outcomes.size() < rounds)
		{
			startHeld(make(origin, "Chain"));
		}
	};
	startHeld(make(origin, "Chain"));
	ASSERT_TRUE(until([&] { return outcomes.size() == rounds; }));
	drain();
	EXPECT_EQ(outcomes.size(), rounds);
	EXPECT_TRUE(completions.empty());
	EXPECT_EQ(outcomes.back().output, "OnSuccess");
}

INSTANTIATE_TEST_SUITE_P(Kinds, NodeLife, testing::Values("Get", "Download", "GoogleDrive", "LowRamDownload"),
	[](const auto& test) { return std::string(test.param); });

TEST_F(Nodes, LeaveNoBodyBehind)
{
	constexpr size_t bodySize = 2 << 20;
	Lab::Origin server;
	server.at("/", std::string(bodySize, 'x'));
	const auto inUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
	const size_t before = inUse();
	for (int number = 0; number < 16; ++number)
	{
		start(nodeKind("Get").make({.url = text(server.url())}, text(std::to_string(number))));
		drain();
		ASSERT_EQ(outcomes.size(), 1u);
		outcomes.clear();
	}
	loop.CollectGarbage();
	EXPECT_LT(inUse(), before + 8 * bodySize) << "their IDs stay among the running requests, what they received does not";
}

TEST_F(Nodes, AResultOfAnotherKindDoesNotReachThem)
{
	NodeOrigin origin;
	UAsyncNodeCorv& plain = startHeld(nodeKind("Get").make(badPins(), "")); // ended; it waits again from here on
	library().registerUAsyncNodeHttpRequest("Info", &plain);
	execute(nodeKind("GoogleFileInfo").build(pins(origin), "Info"));
	drain();
	EXPECT_TRUE(outcomes.empty() && fileInfos.empty()) << "file information for a node of another class is dropped";
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("Info"), &plain);
}

TEST_F(Nodes, GetTheResultOfTheRequestThatBeganWithThem)
{
	Lab::Origin server;
	server.at("/", "hello");
	UAsyncNodeCorv* nodes[2];
	const std::map<char, std::function<void()>> steps = {{'1', [&] { library().registerUAsyncNodeHttpRequest("id", nodes[0]); }},
		{'2', [&] { library().registerUAsyncNodeHttpRequest("id", nodes[1]); }},
		{'s', [&] { execute(get(server.url(), {}, "ID")); }}, // starts the request
		{'u', [&] { library().unregisterUAsyncNodeHttpRequest("id"); }},
		{'g', [&]
			{
				held.clear();
				loop.CollectGarbage();
			}}};
	for (const auto& [order, receiver] :
		{std::pair("1s", "first"), {"1s2", "first"}, {"1su", "event"}, {"1su2", "event"}, {"1sg", "event"}, {"us2", "event"}})
	{
		outcomes.clear();
		for (UAsyncNodeCorv*& node : nodes)
		{
			node = NewObject<UAsyncNodeHttpRequest>();
			held.emplace_back(node);
			listen(*node);
		}
		std::string heard;
		duringOutcome = [&](UAsyncNodeCorv& node) { heard += &node == nodes[0] ? "first" : "second"; };
		for (const char step : std::string_view(order))
		{
			steps.at(step)();
		}
		drain();
		EXPECT_EQ(heard + (takeResults().empty() ? "" : "event"), receiver) << order;
	}
}
