#include "NodeFacts.h"

#include "DisplayName.h"
#include "DocText.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace Program;
using ::testing::ElementsAre;

namespace
{
	template <class Entry>
	const Entry& named(const std::vector<Entry>& all, const std::string& name)
	{
		const auto found = std::find_if(all.begin(), all.end(), [&](const Entry& entry) { return entry.name == name; });
		EXPECT_NE(found, all.end()) << name;
		return *found;
	}

	const NodeFacts& node(const std::string& name)
	{
		static const std::vector<NodeFacts> all = allFacts();
		return named(all, name);
	}

	const PinFacts& pin(const std::string& nodeName, const std::string& name)
	{
		return named(node(nodeName).pins, name);
	}
} // namespace

TEST(DisplayName, IsThatOfTheEditor)
{
	const std::pair<const char*, const char*> cases[] = {{"CreateHttpRequestGET", "Create Http Request GET"},
		{"CorvaneBPLibrary", "Corvane BPLibrary"}, {"getMD5FromFile", "Get MD5From File"}, {"Int64ToFString", "Int 64To FString"},
		{"", ""}};
	for (const auto& [name, shown] : cases)
	{
		EXPECT_EQ(displayName(name), shown);
	}
	EXPECT_EQ(displayName("bNewReadOnlyValue", true), "New Read Only Value");
	EXPECT_EQ(displayName("bindServerSendEvent", true), "Bind Server Send Event");
}

TEST(DocText, CommentsAndTooltipsAreTakenApartAtTheirTags)
{
	const DocText doc =
		readComment("Does it\nwell.\n\nAlways.\n@param one, two  the\nfirst\n@param Three  x. @return y. Thread: any.\n@note Slow.");
	EXPECT_EQ(doc.text, "Does it well.\nAlways.\nThread: any.\nSlow.");
	const std::pair<const char*, const char*> pins[] = {
		{"TWO", "the first"}, {"one", "the first"}, {"three", "x."}, {"ReturnValue", "y."}, {"four", ""}};
	for (const auto& [name, text] : pins)
	{
		EXPECT_EQ(doc.pin(name), text);
	}
	EXPECT_EQ(readComment("").text, "");
	EXPECT_EQ(readComment("@param a").pin("a"), "");

	const DocText tooltip = readTooltip("One.\nTwo.\n@param a b\nc");
	EXPECT_EQ(tooltip.text, "One.\nTwo.");
	EXPECT_EQ(tooltip.pin("a"), "b\nc");
}

TEST(NodeFacts, ComeFromTheHeaders)
{
	const std::string library = "CorvaneBPLibrary.";
	const std::string get = library + "CreateHttpRequestGET";
	EXPECT_EQ(node(get).kind, NodeKind::Callable);
	EXPECT_EQ(node(get).subtitle, "Target is Corvane BPLibrary");
	EXPECT_EQ(node(get).category, "Corvane|GET");
	EXPECT_THAT(node(get).texts, ElementsAre("Send a GET HTTP Request to Webserver.", "Builds a GET request."));
	EXPECT_TRUE(pin(get, "header").mayStayUnconnected);
	EXPECT_THAT(pin(get, "url").texts, ElementsAre("at least 3 characters, sent as given."));
	EXPECT_EQ(node("FileFunctionsCorv.getCleanDirectory").kind, NodeKind::Pure);
	EXPECT_EQ(node(library + "onhttpFileDownloadDelegate").kind, NodeKind::Event);
	EXPECT_FALSE(pin(library + "onhttpFileDownloadDelegate", "size").isLeft());
	EXPECT_THAT(pin(library + "onhttpFileDownloadDelegate", "size").texts, ElementsAre("Filesize in Megabyte"));
	EXPECT_THAT(pin(library + "onhttpFileUploadDelegate", "size").texts, ElementsAre("Filesize in Byte")) << "of the signature";
	EXPECT_THAT(pin("AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Upload_PUT_REQUEST", "optionalRequestID").texts,
		ElementsAre(::testing::StartsWith("Your own RequestID.")));
	// Looked up in the functions that a comment names, by way of two others in the first case.
	EXPECT_EQ(pin(library + "CreateHttpRequestFileMultiUploadPUT", "url").texts, pin(get, "url").texts);
	EXPECT_EQ(pin("FileFunctionsCorv.fileExists", "filePath").texts, pin("FileFunctionsCorv.getCleanDirectory", "filePath").texts);
}
