#include "Host/Objects.h"
#include "Lab/Behaviours/Answers.h"
#include "NodeFixture.h"
#include "UAsyncNodeHttpRequest.h"

#include <gmock/gmock.h>
#include <set>

namespace
{
	class NodeFactory : public NodeFixture, public testing::WithParamInterface<NodeKind>
	{
	protected:
		/** Drains. @return what the origin got, the last progress, all pieces of events, and the downloaded file. */
		std::vector<std::string> finish()
		{
			drain();
			std::vector<std::string> all = origin.takeRequests();
			all.push_back(dir.exists("download.bin") ? dir.read("download.bin") : "no file");
			all.push_back(std::to_string(downloads.empty() ? 0 : downloads.back().size) + " MB to come, " +
						  std::to_string(uploads.empty() ? 0 : uploads.back().bytesSent) + " bytes sent, ");
			for (const ServerSendEvent& event : std::exchange(serverSendEvents, {}))
			{
				all.back() += event.response;
			}
			downloads.clear();
			uploads.clear();
			return all;
		}

		bool isFileInfo() const { return GetParam().name == "GoogleFileInfo"; } // which makes its own ID

		NodeOrigin origin;
	};
} // namespace

TEST_P(NodeFactory, SendsWhatItsBuilderSendsAndSucceeds)
{
	const Pins given = pins(origin);
	execute(GetParam().build(given, "built"));
	const std::vector<std::string> expected = finish();
	completions.clear();
	fileInfos.clear();
	startHeld(GetParam().make(given, "Node"));
	const std::vector<std::string> got = finish();
	EXPECT_EQ(got, expected);
	EXPECT_GE(got.size(), 3u) << "something must have been sent";
	ASSERT_EQ(outcomes.size(), 1u);
	EXPECT_THAT(outcomes[0].brief(), testing::MatchesRegex("OnSuccess 20[06]"));
	EXPECT_TRUE(isFileInfo() || outcomes[0].requestID() == "Node");
	EXPECT_TRUE(completions.empty() && fileInfos.empty()) << "the node alone is told";
	EXPECT_EQ(library().getUAsyncNodeHttpRequest(text(outcomes[0].requestID())), nullptr);
}

TEST_P(NodeFactory, FailsWithTheServersCodeOrWhenItsFileIsMissing)
{
	Lab::Origin refusing;
	refusing.at("*", Lab::status({.code = 403, .text = "not you"}));
	Pins given = pins(origin);
	given.url = text(refusing.url());
	given.filePath = given.content = text(dir.path("missing"));
	given.filePaths = {given.filePath, given.filePath};
	UCorvaneBPLibrary::setGoogleDriveBase(text(refusing.url("")));
	startHeld(GetParam().make(given, "Node"));
	EXPECT_TRUE(outcomes.empty()) << "never inside the call";
	drain();
	ASSERT_EQ(outcomes.size(), 1u);
	const bool bNeedsFile = GetParam().name.find("Upload") != std::string::npos || GetParam().name == "IndividualFile";
	// An unreadable view page has a code of its own.
	EXPECT_EQ(outcomes[0].brief(), bNeedsFile ? "OnFail 400" : isFileInfo() ? "OnFail 452" : "OnFail 403");
	EXPECT_TRUE(completions.empty());
}

TEST_P(NodeFactory, TellsARefusalInsideTheCall)
{
	UAsyncNodeCorv* node = GetParam().make(badPins(), "Refused");
	held.emplace_back(node);
	const bool bTellsLater = GetParam().name.starts_with("Individual");
	const bool bDrive = GetParam().name.starts_with("Google");
	EXPECT_EQ(hasEnded(*node), !bTellsLater);
	EXPECT_EQ(node->IsRooted(), bTellsLater);
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("Refused"), bTellsLater ? node : nullptr);
	EXPECT_EQ(completions.size(), bTellsLater || bDrive ? 0u : 1u);
	EXPECT_EQ(fileInfos.size(), bDrive ? 1u : 0u);
	start(node);
	EXPECT_TRUE(outcomes.empty()) << "nobody listened when it ended";
	drain();
	EXPECT_EQ(outcomes.empty() ? "" : outcomes[0].brief() + outcomes[0].requestID(), bTellsLater ? "OnFail 400Refused" : "");
	EXPECT_EQ(completions.size() + fileInfos.size(), bTellsLater ? 0u : 1u);
	EXPECT_TRUE(hasEnded(*node));
	EXPECT_EQ(origin.log().size(), 0u);
	EXPECT_EQ(log.lines().size(), 1u) << "the refusal itself";
}

TEST_P(NodeFactory, LeavesNothingBehindAndMakesNewIds)
{
	const size_t before = HostObjects::NumObjects();
	const Pins given = pins(origin);
	TWeakObjectPtr<UAsyncNodeCorv> refused = GetParam().make(badPins(), "");
	std::set<std::string> ids;
	for (int number = 0; number < 3; ++number)
	{
		startHeld(GetParam().make(given, ""));
		drain(); // one at a time: they share their files
		EXPECT_THAT(outcomes.back().requestID(), testing::MatchesRegex("[0-9A-F]{32}"));
		ids.insert(outcomes.back().requestID());
	}
	held.clear();
	EXPECT_TRUE(collectUntil(before));
	EXPECT_FALSE(refused.IsValid());
	EXPECT_EQ(ids.size(), 3u);
}

INSTANTIATE_TEST_SUITE_P(Kinds, NodeFactory, testing::ValuesIn(nodeKinds), [](const auto& test) { return test.param.name; });

namespace
{
	class IndividualNode : public NodeFixture
	{
	protected:
		/** One that its builder refuses. */
		UAsyncNodeCorv* refused(const char* id) { return nodeKind("IndividualText").make(badPins(), id); }
	};
} // namespace

TEST_F(IndividualNode, ALateRefusalReachesOneThatHasLostItsIdButNoneThatHasEnded)
{
	UAsyncNodeCorv& ended = start(refused("Ended"));
	ended.httpRequestComplete("", {}, {}, 200, {}, "Ended"); // another request of the same ID was quicker
	start(refused("Lost"));
	start(refused("lOST"));
	drain();
	ASSERT_EQ(outcomes.size(), 3u);
	EXPECT_EQ(outcomes[0].brief(), "OnSuccess 200");
	EXPECT_EQ(outcomes[1].requestID(), "Lost");
	EXPECT_EQ(outcomes[2].requestID(), "lOST");
	EXPECT_EQ(takeResults(), std::vector<std::string>{"Ended: 400 "});
}
