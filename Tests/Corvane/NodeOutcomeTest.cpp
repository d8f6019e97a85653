#include "NodeFixture.h"
#include "UAsyncNodeHttpDownloadUpload.h"
#include "UAsyncNodeHttpGoogleFileInfoRequest.h"
#include "UAsyncNodeHttpRequest.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	/** One class of nodes: how it is told, and what its outputs then hold. */
	struct NodeClass
	{
		const char* name;
		UAsyncNodeCorv* (*make)(const FString& id);
		void (*complete)(UAsyncNodeCorv& node, int32 statusCode);
		std::map<std::string, std::string> pins; // without the status
		bool bZeroSucceeds;
		bool bHasIdInOutcome;
	};

	void PrintTo(const NodeClass& nodeClass, std::ostream* out)
	{
		*out << nodeClass.name;
	}

	template <class T>
	UAsyncNodeCorv* registered(const FString& id)
	{
		T* node = NewObject<T>();
		node->requestID = id;
		UCorvaneBPLibrary::getCorvaneTarget()->registerUAsyncNodeHttpRequest(id, node);
		return node;
	}

	using Plain = UAsyncNodeHttpRequest;
	using File = UAsyncNodeHttpDownloadUpload;
	using Info = UAsyncNodeHttpGoogleFileInfoRequest;

	const NodeClass nodeClasses[] = {
		{"Plain", &registered<Plain>,
			[](UAsyncNodeCorv& node, int32 statusCode) {
				node.httpRequestComplete("text", {"line"}, {"a: 1", "b: 2"}, statusCode, {'b'}, "ID");
			},
			{{"dataString", "text"}, {"data", "line\n"}, {"header", "a: 1\nb: 2\n"}, {"byteData", "b"}, {"requestID", "ID"}}, false, true},
		{"DownloadUpload", &registered<File>,
			[](UAsyncNodeCorv& node, int32 statusCode) {
				static_cast<File&>(node).httpRequestDownloadUploadComplete("text", {"line"}, {"a: 1", "b: 2"}, statusCode, "ID");
			},
			{{"dataString", "text"}, {"dataArray", "line\n"}, {"header", "a: 1\nb: 2\n"}, {"requestID", "ID"}}, false, false},
		{"GoogleFileInfo", &registered<Info>,
			[](UAsyncNodeCorv& node, int32 statusCode)
			{ static_cast<Info&>(node).httpRequestCompleteGoogleFileInfo("name", int64(1) << 40, statusCode, "drive", "ID"); },
			{{"fileName", "name"}, {"fileSizeInBytes", "1099511627776"}, {"downloadID", "drive"}, {"requestID", "ID"}}, true, true}};

	class NodeOutcome : public NodeFixture, public testing::WithParamInterface<NodeClass>
	{
	protected:
		UAsyncNodeCorv& make()
		{
			held.emplace_back(GetParam().make("ID"));
			UAsyncNodeCorv& node = *static_cast<UAsyncNodeCorv*>(held.back().Get());
			listen(node);
			return node;
		}
	};
} // namespace

TEST_P(NodeOutcome, TheStatusChoosesTheOutput)
{
	for (const int32 statusCode : {0, 1, 200, 206, 399, 400, 404, 452, 500})
	{
		outcomes.clear();
		GetParam().complete(make(), statusCode);
		ASSERT_EQ(outcomes.size(), 1u) << statusCode;
		const bool bSucceeds = statusCode == 0 ? GetParam().bZeroSucceeds : statusCode < 400;
		EXPECT_EQ(outcomes[0].brief(), (bSucceeds ? "OnSuccess " : "OnFail ") + std::to_string(statusCode));
		outcomes[0].pins.erase("statusCode");
		EXPECT_EQ(outcomes[0].pins, GetParam().pins);
	}
}

TEST_P(NodeOutcome, EndsTheNodeInTheOrderOfItsClassAndLeavesALaterOneItsId)
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
	GetParam().complete(node, 200);
	EXPECT_EQ(bHadId, GetParam().bHasIdInOutcome);
	EXPECT_TRUE(bWasHeld);
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("id"), nullptr);
	EXPECT_FALSE(node.IsRooted());
	EXPECT_TRUE(hasEnded(node));

	UAsyncNodeCorv& earlier = make();
	UAsyncNodeCorv& later = make();
	GetParam().complete(earlier, 200);
	EXPECT_EQ(library().getUAsyncNodeHttpRequest("ID"), &later);
}

INSTANTIATE_TEST_SUITE_P(
	Classes, NodeOutcome, testing::ValuesIn(nodeClasses), [](const auto& test) { return std::string(test.param.name); });
