#include "NodeFacts.h"

#include "DisplayName.h"
#include "DocText.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace Program;
using ::testing::ElementsAre;

namespace
{
	NodeFacts factsNamed(const std::string& name)
	{
		const std::vector<NodeFacts> all = allFacts();
		const auto found = std::find_if(all.begin(), all.end(), [&](const NodeFacts& facts) { return facts.ownName() == name; });
		EXPECT_NE(found, all.end()) << name;
		return *found;
	}

	const PinFacts& pinNamed(const NodeFacts& facts, const std::string& name)
	{
		const auto found = std::find_if(facts.pins.begin(), facts.pins.end(), [&](const PinFacts& pin) { return pin.name == name; });
		EXPECT_NE(found, facts.pins.end()) << name;
		return *found;
	}
} // namespace

TEST(DisplayName, IsThatOfTheEditor)
{
	const std::pair<const char*, const char*> cases[] = {
		{"CreateHttpRequestGET", "Create Http Request GET"},
		{"CorvaneBPLibrary", "Corvane BPLibrary"},
		{"getMD5FromFile", "Get MD5From File"},
		{"Int64ToFString", "Int 64To FString"},
		{"", ""},
	};
	for (const auto& [name, shown] : cases)
	{
		EXPECT_EQ(displayName(name), shown);
	}
	EXPECT_EQ(displayName("bNewReadOnlyValue", true), "New Read Only Value");
	EXPECT_EQ(displayName("bindServerSendEvent", true), "Bind Server Send Event");
}

TEST(DocText, CommentIsTakenApartAtItsTags)
{
	const DocText doc =
		readComment("Does it\nwell.\n\nAlways.\n@param one, two  the\nfirst\n@param Three  x. @return y. Thread: any.\n@note Slow.");
	EXPECT_EQ(doc.text, "Does it well.\nAlways.\nThread: any.\nSlow.");
	EXPECT_EQ(doc.pin("TWO"), "the first");
	EXPECT_EQ(doc.pin("one"), "the first");
	EXPECT_EQ(doc.pin("three"), "x.");
	EXPECT_EQ(doc.pin("ReturnValue"), "y.");
	EXPECT_EQ(doc.pin("four"), "");
	EXPECT_EQ(readComment("").text, "");
	EXPECT_EQ(readComment("@param a").pin("a"), "");
}

TEST(DocText, TooltipKeepsItsLines)
{
	const DocText doc = readTooltip("One.\nTwo.\n@param a b\nc");
	EXPECT_EQ(doc.text, "One.\nTwo.");
	EXPECT_EQ(doc.pin("a"), "b\nc");
}

TEST(NodeFacts, ComeFromTheHeaders)
{
	const NodeFacts get = factsNamed("CreateHttpRequestGET");
	EXPECT_EQ(get.kind, NodeKind::Callable);
	EXPECT_EQ(get.subtitle, "Target is Corvane BPLibrary");
	EXPECT_THAT(get.texts, ElementsAre("Send a GET HTTP Request to Webserver.", "Builds a GET request."));
	EXPECT_TRUE(pinNamed(get, "header").mayStayUnconnected);
	EXPECT_FALSE(pinNamed(get, "url").mayStayUnconnected);
	EXPECT_THAT(pinNamed(get, "url").texts, ElementsAre("at least 3 characters, sent as given."));

	EXPECT_EQ(factsNamed("getCleanDirectory").kind, NodeKind::Pure);
	const NodeFacts event = factsNamed("onhttpFileDownloadDelegate");
	EXPECT_EQ(event.kind, NodeKind::Event);
	EXPECT_FALSE(pinNamed(event, "size").isLeft());
	EXPECT_THAT(pinNamed(event, "size").texts, ElementsAre("Filesize in Megabyte"));
	EXPECT_THAT(pinNamed(factsNamed("onhttpFileUploadDelegate"), "size").texts, ElementsAre("Filesize in Byte")) << "of the signature";
	const char* const own = "Your own RequestID. It will be output again in the httpRequestComplete event. This allows the request being "
							"assigned to the response.";
	EXPECT_THAT(pinNamed(factsNamed("AsyncExecuteHTTP_Upload_PUT_REQUEST"), "optionalRequestID").texts, ElementsAre(own));
	for (const NodeFacts& facts : allFacts())
	{
		EXPECT_THAT(facts.category, testing::StartsWith("Corvane|")) << facts.name;
	}
}

TEST(NodeFacts, TextsAreLookedUpInTheFunctionsThatACommentNames)
{
	const std::vector<std::string> own = pinNamed(factsNamed("CreateHttpRequestGET"), "url").texts;
	EXPECT_EQ(pinNamed(factsNamed("CreateHttpRequestFileMultiUploadPUT"), "url").texts, own); // by way of two others
	EXPECT_EQ(pinNamed(factsNamed("fileExists"), "filePath").texts, pinNamed(factsNamed("getCleanDirectory"), "filePath").texts);
}
