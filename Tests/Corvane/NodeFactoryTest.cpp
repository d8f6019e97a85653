#include "Host/Objects.h"
#include "NodeFixture.h"
#include "UAsyncNodeHttpRequest.h"

namespace
{
	class NodeFactory : public NodeFixture, public testing::WithParamInterface<NodeKind>
	{
	protected:
		/** Runs a request to its end. @return what the origin got, and the downloaded file. */
		template <class Start>
		std::vector<std::string> sent(Start startRequest)
		{
			origin.forget();
			startRequest();
			drain();
			std::vector<std::string> all = origin.requests();
			all.push_back(dir.exists("download.bin") ? dir.read("download.bin") : "no file");
			return all;
		}

		bool isFileInfo() const { return GetParam().name == std::string("GoogleFileInfo"); }
		bool isIndividual() const { return std::string(GetParam().name).starts_with("Individual"); }
		/** The file-info node makes its own ID. */
		std::string idOf(const std::string& given, const Outcome& outcome) const { return isFileInfo() ? outcome.requestID() : given; }

		LogCapture log; // before the server, whose scripts may log
		NodeOrigin origin;
	};
} // namespace

TEST_P(NodeFactory, SendsWhatItsBuilderSendsAndSucceeds)
{
	const NodeSite at = site(origin);
	const std::vector<std::string> expected = sent([&] { execute(GetParam().build(at, "built")); });
	completions.clear();
	fileInfos.clear();
	const std::vector<std::string> got = sent([&] { startHeld(GetParam().make(at, "Node")); });
	EXPECT_EQ(got, expected);
	EXPECT_GE(got.size(), 2u) << "something must have been sent";
	ASSERT_EQ(outcomes.size(), 1u);
	EXPECT_EQ(outcomes[0].output, "OnSuccess");
	EXPECT_LT(outcomes[0].statusCode(), 300);
	EXPECT_EQ(outcomes[0].requestID(), idOf("Node", outcomes[0]));
	EXPECT_TRUE(completions.empty() && fileInfos.empty()) << "the node alone is told";
	EXPECT_EQ(library().getUAsyncNodeHttpRequest(text(outcomes[0].requestID())), nullptr);
}

TEST_P(NodeFactory, FailsWithTheServersCode)
{
	NodeSite at = site(origin);
	RawServer refusing(answering([](const std::string&) { return answer(403, "not you"); }));
	at.url = text(refusing.url());
	UCorvaneBPLibrary::setGoogleDriveBase(text(refusing.url("")));
	startHeld(GetParam().make(at, "Node"));
	drain();
	ASSERT_EQ(outcomes.size(), 1u);
	EXPECT_EQ(outcomes[0].output, "OnFail");
	EXPECT_EQ(outcomes[0].statusCode(), isFileInfo() ? 452 : 403); // an unreadable view page has a code of its own
}

TEST_P(NodeFactory, TellsARefusalInsideTheCall)
{
	UAsyncNodeCorv* node = GetParam().make(badSite(), "Refused");
	held.emplace_back(node);
	const bool bTellsLater = isIndividual();
	const bool bDrive = std::string(GetParam().name).starts_with("Google");
	EXPECT_EQ(hasEnded(*node), !bTellsLater);
	EXPECT_EQ(node->IsRooted(), bTellsLater);
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("Refused"), bTellsLater ? node : nullptr);
	EXPECT_EQ(completions.size(), bTellsLater || bDrive ? 0u : 1u);
	EXPECT_EQ(fileInfos.size(), bDrive ? 1u : 0u);
	start(node);
	drain();
	EXPECT_EQ(outcomes.size(), bTellsLater ? 1u : 0u) << "nobody listened when it ended";
	EXPECT_EQ(completions.size() + fileInfos.size(), bTellsLater ? 0u : 1u);
	EXPECT_TRUE(hasEnded(*node));
	EXPECT_TRUE(origin.requests().empty());
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error), 1) << "the refusal itself";
}

TEST_P(NodeFactory, LeavesNothingBehind)
{
	const size_t before = HostObjects::NumObjects();
	const NodeSite at = site(origin);
	TWeakObjectPtr<UAsyncNodeCorv> refused = GetParam().make(badSite(), "");
	for (int number = 0; number < 3; ++number)
	{
		startHeld(GetParam().make(at, ""));
		drain(); // one at a time: they share their files
	}
	held.clear();
	EXPECT_TRUE(loop.WaitFor(
		[&]
		{
			loop.CollectGarbage(); // the HTTP thread may still be on its way out of a callback
			return HostObjects::NumObjects() == before;
		},
		patienceSeconds));
	EXPECT_FALSE(refused.IsValid());
	EXPECT_EQ(outcomes.size(), 3u);
}

INSTANTIATE_TEST_SUITE_P(Kinds, NodeFactory, testing::ValuesIn(nodeKinds), [](const auto& test) { return std::string(test.param.name); });

namespace
{
	class IndividualNode : public NodeFixture
	{
	protected:
		using Node = UAsyncNodeHttpRequest;

		static Node* make(const char* id, const TMap<FString, FString>& header, const char* url = anyUrl, const char* verb = "GET")
		{
			return Node::AsyncExecuteHTTP_Individual_REQUEST(url, header, verb, EHTTPCorvIndividualType::STRING, "", id, false);
		}

		static constexpr const char* anyUrl = "http://127.0.0.1:1/";
		LogCapture log;
		const TMap<FString, FString> typed{{"Content-Type", "text/plain"}};
	};
} // namespace

TEST_F(IndividualNode, FailsOneTaskLaterForEveryRefusal)
{
	start(make("no header", {}));
	start(make("no type", {{"Accept", "*/*"}}));
	start(make("short", typed, "x"));
	start(make("verb", typed, anyUrl, "SCATTER"));
	EXPECT_TRUE(outcomes.empty());
	loop.Tick();
	ASSERT_EQ(outcomes.size(), 4u);
	EXPECT_EQ(outcomes[0].output, "OnFail");
	const std::map<std::string, std::string> expected{
		{"dataString", ""}, {"data", ""}, {"header", ""}, {"statusCode", "400"}, {"byteData", ""}, {"requestID", "no header"}};
	EXPECT_EQ(outcomes[0].pins, expected);
	EXPECT_EQ(outcomes[1].requestID(), "no type");
	EXPECT_EQ(outcomes[2].requestID(), "short");
	EXPECT_EQ(outcomes[3].requestID(), "verb");
	EXPECT_TRUE(completions.empty());
}

TEST_F(IndividualNode, ALateRefusalReachesOneThatHasLostItsIdButNoneThatHasEnded)
{
	Node* ended = make("Ended", {});
	start(ended);
	ended->httpRequestComplete("", {}, {}, 200, {}, "Ended"); // another request of the same ID was quicker
	start(make("Lost", {}));
	start(make("lOST", {}));
	drain();
	ASSERT_EQ(outcomes.size(), 3u);
	EXPECT_EQ(outcomes[0].statusCode(), 200);
	EXPECT_EQ(outcomes[1].requestID(), "Lost");
	EXPECT_EQ(outcomes[2].requestID(), "lOST");
	ASSERT_EQ(completions.size(), 1u);
	EXPECT_EQ(completions[0].requestID, "Ended");
}
