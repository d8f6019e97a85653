#include "Host/Objects.h"
#include "NginxServer.h"
#include "NodeFixture.h"
#include "UAsyncNodeHttpRequest.h"

#include <fstream>
#include <gmock/gmock.h>
#include <malloc.h>
#include <set>

namespace
{
	/** The classes of nodes that take an ID from their caller. */
	class NodeLife : public NodeFixture, public testing::WithParamInterface<const char*>
	{
	protected:
		UAsyncNodeCorv* make(const NodeOrigin& origin, const FString& id) { return nodeKind(GetParam()).make(site(origin), id); }
		bool isRootedKind() const { return GetParam() == std::string("Get"); }
		size_t results() const { return outcomes.size() + completions.size(); }

		Gate gate;
	};
} // namespace

TEST_P(NodeLife, TwoOfOneIdHaveTheirOwnOutcomes)
{
	NodeOrigin origin(&gate);
	const TWeakObjectPtr<UAsyncNodeCorv> nodes[] = {&startHeld(make(origin, "Same")), nullptr};
	ASSERT_TRUE(loop.WaitFor([&] { return origin.begun() == 1; }, patienceSeconds));
	UCorvaneBPLibrary::cancelRequest("same");
	const TWeakObjectPtr<UAsyncNodeCorv> later = &startHeld(make(origin, "sAME"));
	EXPECT_EQ(nodes[0].Get()->IsRooted(), isRootedKind()) << "its result is still to come";
	gate.open();
	drain();
	ASSERT_EQ(outcomes.size(), 2u);
	for (const Outcome& outcome : outcomes)
	{
		EXPECT_EQ(outcome.output, outcome.requestID() == "Same" ? "OnFail" : "OnSuccess");
	}
	EXPECT_NE(outcomes[0].requestID(), outcomes[1].requestID());
	EXPECT_TRUE(completions.empty());
	held.clear();
	EXPECT_TRUE(loop.WaitFor(
		[&]
		{
			loop.CollectGarbage();
			return !nodes[0].IsValid() && !later.IsValid();
		},
		patienceSeconds));
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
		if (bAnswerIsPosted && callbacksNeedTicks)
		{
			continue; // no answer gets on its way without a tick
		}
		Gate own;
		NodeOrigin origin(&own);
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
	ASSERT_TRUE(loop.WaitFor([&] { return outcomes.size() == rounds; }, patienceSeconds));
	drain();
	EXPECT_EQ(outcomes.size(), rounds);
	EXPECT_TRUE(completions.empty());
	EXPECT_EQ(outcomes.back().output, "OnSuccess");
}

TEST_P(NodeLife, ACancelledNodeFailsOnce)
{
	NodeOrigin origin(&gate);
	startHeld(make(origin, "Cancelled"));
	ASSERT_TRUE(loop.WaitFor([&] { return origin.begun() == 1; }, patienceSeconds));
	UCorvaneBPLibrary::cancelRequest("cANCELLED");
	UCorvaneBPLibrary::cancelRequest("Cancelled");
	drain();
	ASSERT_EQ(results(), 1u);
	EXPECT_EQ(outcomes[0].statusCode(), 500);
	EXPECT_EQ(outcomes[0].output, "OnFail");
}

INSTANTIATE_TEST_SUITE_P(Kinds, NodeLife, testing::Values("Get", "Download"), [](const auto& test) { return std::string(test.param); });

namespace
{
	class Nodes : public NodeFixture
	{
	};
} // namespace

TEST_F(Nodes, AThousandAtOnceHaveOneOutcomeEach)
{
	constexpr size_t atOnce = 1000;
	NginxServer server(NginxOptions{});
	std::ofstream(server.filesDirectory() / "small") << "hello";
	const size_t before = HostObjects::NumObjects();
	for (size_t number = 0; number < atOnce; ++number)
	{
		start(UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST(text(server.url("/small")), {}, text(std::to_string(number)), false));
	}
	drain();
	std::set<std::string> seen;
	for (const Outcome& outcome : outcomes)
	{
		EXPECT_EQ(outcome.pins.at("byteData"), "hello");
		seen.insert(outcome.requestID());
	}
	EXPECT_EQ(outcomes.size(), atOnce);
	EXPECT_EQ(seen.size(), atOnce);
	EXPECT_TRUE(completions.empty());
	EXPECT_TRUE(loop.WaitFor(
		[&]
		{
			loop.CollectGarbage();
			return HostObjects::NumObjects() == before;
		},
		patienceSeconds));
}

TEST_F(Nodes, LeaveNoBodyBehind)
{
	constexpr size_t bodySize = 4 << 20;
	RawServer server(answering([](const std::string&) { return answer(200, std::string(bodySize, 'x')); }));
	const auto inUse = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
	const size_t before = inUse();
	for (int number = 0; number < 16; ++number)
	{
		start(UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST(text(server.url()), {}, text(std::to_string(number)), false));
		drain();
		ASSERT_EQ(outcomes.size(), 1u);
		outcomes.clear();
	}
	loop.CollectGarbage();
	EXPECT_LT(inUse(), before + 8 * bodySize) << "their IDs stay among the running requests, what they received does not";
}

TEST_F(Nodes, ProgressAndServerSentEventsGoToTheLibrary)
{
	Gate more;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nab");
			connection.waitFor(more);
			connection.send("cd");
		});
	const FString url = text(server.url());
	for (const bool bServerSentEvents : {false, true})
	{
		start(UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST(url, {}, bServerSentEvents ? "Events" : "Progress", bServerSentEvents));
	}
	ASSERT_TRUE(loop.WaitFor([this] { return !downloads.empty() && !serverSendEvents.empty(); }, patienceSeconds));
	more.open();
	drain();
	EXPECT_EQ(downloads[0].requestID, "Progress");
	EXPECT_EQ(serverSendEvents[0].requestID, "Events");
	EXPECT_EQ(serverSendEvents[0].response, "ab");
	EXPECT_EQ(outcomes.size(), 2u);
}

TEST_F(Nodes, TheGivenSizeOfADriveFileReachesItsProgress)
{
	Gate more;
	RawServer drive(
		[&](Connection& connection)
		{
			if (connection.readHead().find("confirm") == std::string::npos)
			{
				connection.send(answer(200, "<a href=\"/uc;confirm=t0k3n&x\">"));
				connection.readHead();
			}
			connection.send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nab");
			connection.waitFor(more);
			connection.send("cd");
		});
	UCorvaneBPLibrary::setGoogleDriveBase(text(drive.url("")));
	start(UAsyncNodeHttpRequest::AsyncExecuteHTTP_GoogleDrive_REQUEST("level", "", int64(5) << 20));
	ASSERT_TRUE(loop.WaitFor([this] { return !downloads.empty(); }, patienceSeconds));
	more.open();
	drain();
	EXPECT_FLOAT_EQ(downloads[0].size, 5.0f);
	EXPECT_EQ(outcomes.size(), 1u);
}

TEST_F(Nodes, AResultOfAnotherKindDoesNotReachThem)
{
	NodeOrigin origin;
	const NodeSite at = site(origin);
	UAsyncNodeCorv& plain = startHeld(nodeKind("Get").make(badSite(), "")); // ended; it waits again from here on
	library().registerUAsyncNodeHttpRequest("Info", &plain);
	execute(nodeKind("GoogleFileInfo").build(at, "Info"));
	drain();
	EXPECT_TRUE(outcomes.empty() && fileInfos.empty()) << "file information for a node of another class is dropped";
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("Info"), &plain);
}

TEST_F(Nodes, KeepARequestOfSeveralStepsWhenALaterOneTakesTheId)
{
	for (const char* kind : {"GoogleDrive", "LowRamDownload"})
	{
		outcomes.clear();
		Gate gate;
		NodeOrigin origin(&gate);
		startHeld(nodeKind(kind).make(site(origin), "Same"));
		startHeld(nodeKind(kind).make(site(origin), "sAME"));
		gate.open();
		drain();
		ASSERT_EQ(outcomes.size(), 2u) << kind;
		EXPECT_NE(outcomes[0].requestID(), outcomes[1].requestID()) << kind;
		EXPECT_TRUE(completions.empty()) << kind;
	}
}

TEST_F(Nodes, EveryClassMakesIdsOfItsOwn)
{
	NodeOrigin origin;
	const NodeSite at = site(origin);
	std::set<std::string> ids;
	for (const char* kind : {"Get", "Download", "IndividualText", "GoogleFileInfo"})
	{
		startHeld(nodeKind(kind).make(at, ""));
		drain();
		EXPECT_THAT(outcomes.back().requestID(), testing::MatchesRegex("[0-9A-F]{32}"));
		ids.insert(outcomes.back().requestID());
	}
	EXPECT_EQ(ids.size(), 4u);
}
