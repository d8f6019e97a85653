#include "NodeFixture.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UAsyncNodeHttpRequest.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	using Pins = std::map<std::string, std::string>;

	/** One class of nodes: how it is told, and what its outputs then hold. */
	struct NodeClass
	{
		const char* name;
		UAsyncNodeCorv* (*make)(const FString& id);
		void (*complete)(UAsyncNodeCorv& node, int32 statusCode);
		Pins pins; // without the status
		bool bZeroSucceeds;
		bool bHasIdInOutcome;
	};

	template <class T>
	UAsyncNodeCorv* registered(const FString& id)
	{
		T* node = NewObject<T>();
		node->requestID = id;
		UCorvaneBPLibrary::getCorvaneTarget()->registerUAsyncNodeHttpRequest(id, node);
		return node;
	}

	const NodeClass plain{"Plain", &registered<UAsyncNodeHttpRequest>,
		[](UAsyncNodeCorv& node, int32 statusCode) {
			node.httpRequestComplete("text", {"line"}, {"a: 1", "b: 2"}, statusCode, {'b'}, "ID");
		},
		{{"dataString", "text"}, {"data", "line\n"}, {"header", "a: 1\nb: 2\n"}, {"byteData", "b"}, {"requestID", "ID"}}, false, true};
	const NodeClass file{"DownloadUpload", &registered<UAsyncNodeHttpDownloadUpload>,
		[](UAsyncNodeCorv& node, int32 statusCode)
		{
			static_cast<UAsyncNodeHttpDownloadUpload&>(node).httpRequestDownloadUploadComplete(
				"text", {"line"}, {"a: 1", "b: 2"}, statusCode, "ID");
		},
		{{"dataString", "text"}, {"dataArray", "line\n"}, {"header", "a: 1\nb: 2\n"}, {"requestID", "ID"}}, false, false};
	const NodeClass info{"GoogleFileInfo", &registered<UAsyncNodeHttpGoogleFileInfoRequest>,
		[](UAsyncNodeCorv& node, int32 statusCode)
		{
			static_cast<UAsyncNodeHttpGoogleFileInfoRequest&>(node).httpRequestCompleteGoogleFileInfo(
				"name", int64(1) << 40, statusCode, "drive", "ID");
		},
		{{"fileName", "name"}, {"fileSizeInBytes", "1099511627776"}, {"downloadID", "drive"}, {"requestID", "ID"}}, true, true};

	class NodeOutcome : public NodeFixture, public testing::WithParamInterface<NodeClass>
	{
	protected:
		UAsyncNodeCorv& make()
		{
			UAsyncNodeCorv* node = GetParam().make("ID");
			held.emplace_back(node);
			listen(*node);
			return *node;
		}
		void complete(UAsyncNodeCorv& node, int32 statusCode = 200) { GetParam().complete(node, statusCode); }
	};
} // namespace

TEST_P(NodeOutcome, TheStatusChoosesTheOutput)
{
	const std::pair<int32, bool> cases[] = {{0, GetParam().bZeroSucceeds}, {1, true}, {200, true}, {206, true}, {399, true}, {400, false},
		{404, false}, {452, false}, {500, false}};
	for (const auto& [statusCode, bSucceeds] : cases)
	{
		outcomes.clear();
		complete(make(), statusCode);
		ASSERT_EQ(outcomes.size(), 1u) << statusCode;
		EXPECT_EQ(outcomes[0].output, bSucceeds ? "OnSuccess" : "OnFail") << statusCode;
		Pins expected = GetParam().pins;
		expected["statusCode"] = std::to_string(statusCode);
		EXPECT_EQ(outcomes[0].pins, expected);
	}
}

TEST_P(NodeOutcome, EndsTheNodeInTheOrderOfItsClass)
{
	UAsyncNodeCorv& node = make();
	node.AddToRoot();
	bool bHadId = !GetParam().bHasIdInOutcome;
	bool bWasHeld = false;
	duringOutcome = [&](UAsyncNodeCorv& ending)
	{
		bHadId = library().getUAsyncNodeHttpRequest("id") == &ending;
		bWasHeld = ending.IsRooted() && !hasEnded(ending);
	};
	complete(node);
	EXPECT_EQ(bHadId, GetParam().bHasIdInOutcome);
	EXPECT_TRUE(bWasHeld);
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("id"), nullptr);
	EXPECT_FALSE(node.IsRooted());
	EXPECT_TRUE(hasEnded(node));
}

TEST_P(NodeOutcome, LeavesALaterNodeItsId)
{
	UAsyncNodeCorv& earlier = make();
	UAsyncNodeCorv& later = make();
	complete(earlier);
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("ID"), &later);
}

TEST_P(NodeOutcome, ANodeWithoutRequestsStartsNothing)
{
	LogCapture log;
	make().Activate();
	drain();
	EXPECT_TRUE(outcomes.empty() && completions.empty());
	EXPECT_TRUE(log.lines().empty());
}

INSTANTIATE_TEST_SUITE_P(
	Classes, NodeOutcome, testing::Values(plain, file, info), [](const auto& test) { return std::string(test.param.name); });
