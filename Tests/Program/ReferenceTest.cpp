#include "CorvaneBPLibrary.h"
#include "DisplayName.h"
#include "DocText.h"
#include "Graph/BlueprintText.h"
#include "Graph/GraphDrawing.h"
#include "Graph/GraphFile.h"
#include "Graph/GraphNodes.h"
#include "ProcessRun.h"
#include "TempDir.h"
#include "WriteReference.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace Program;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

namespace
{
	NodeFacts node(const std::string& name)
	{
		const std::vector<NodeFacts> all = allFacts();
		const auto found = std::find_if(all.begin(), all.end(), [&](const NodeFacts& facts) { return facts.ownName() == name; });
		return all.at(static_cast<size_t>(found - all.begin()));
	}

	PinFacts pin(const std::string& nodeName, const std::string& name)
	{
		const std::vector<PinFacts> all = node(nodeName).pins;
		const auto found = std::find_if(all.begin(), all.end(), [&](const PinFacts& facts) { return facts.name == name; });
		return all.at(static_cast<size_t>(found - all.begin()));
	}

	size_t count(const std::string& text, const std::string& part)
	{
		const size_t place = text.find(part);
		return place == std::string::npos ? 0 : 1 + count(text.substr(place + 1), part);
	}

	/** @return what is wrong with the pages in a folder. */
	std::string faultsOf(const std::string& folder)
	{
		const ProcessRun check = runProcess({"/usr/bin/env", "python3", CORVANE_CHECK_PAGES, folder});
		return check.out + check.err;
	}
} // namespace

TEST(DisplayName, IsThatOfTheEditor)
{
	const std::pair<const char*, const char*> cases[] = {{"CreateHttpRequestGET", "Create Http Request GET"},
		{"CorvaneBPLibrary", "Corvane BPLibrary"}, {"getMD5FromFile", "Get MD5From File"}, {"Int64ToFString", "Int 64To FString"},
		{"bNewReadOnlyValue", "New Read Only Value"}, {"bindServerSendEvent", "Bind Server Send Event"}, {"", ""}};
	for (const auto& [name, shown] : cases)
	{
		EXPECT_EQ(displayName(name, *name == 'b'), shown);
	}
}

TEST(DocText, CommentsAndTooltipsAreTakenApartAtTheirTags)
{
	const DocText doc =
		readComment("Does it\nwell.\n\nAlways.\n@param one, two  the\nfirst\n@param Three  x. @return y. Thread: any.\n@note Slow.");
	EXPECT_EQ(doc.text, "Does it well.\nAlways.\nThread: any.\nSlow.");
	EXPECT_THAT(doc.pins, ElementsAre(Pair("one", "the first"), Pair("two", "the first"), Pair("Three", "x."), Pair("ReturnValue", "y.")));
	EXPECT_EQ(doc.pin("THREE"), "x.");
	EXPECT_EQ(readTooltip("One.\nTwo.\n@param a b\nc").text, "One.\nTwo.");
	EXPECT_EQ(readTooltip("One.\nTwo.\n@param a b\nc").pin("a"), "b\nc");
}

TEST(NodeFacts, ComeFromTheHeaders)
{
	const NodeFacts get = node("CreateHttpRequestGET");
	EXPECT_EQ(get.kind, NodeKind::Callable);
	EXPECT_EQ(get.category, "Corvane|GET");
	EXPECT_THAT(get.texts, ElementsAre("Send a GET HTTP Request to Webserver.", "Builds a GET request."));
	EXPECT_TRUE(pin("CreateHttpRequestGET", "header").mayStayUnconnected);
	EXPECT_FALSE(pin("CreateHttpRequestGET", "url").mayStayUnconnected);
	EXPECT_EQ(node("getCleanDirectory").kind, NodeKind::Pure);
	EXPECT_EQ(node("onhttpFileDownloadDelegate").kind, NodeKind::Event);
	EXPECT_FALSE(pin("onhttpFileDownloadDelegate", "size").isLeft());
	EXPECT_THAT(pin("onhttpFileDownloadDelegate", "size").texts, ElementsAre("Filesize in Megabyte"));
	EXPECT_THAT(pin("onhttpFileUploadDelegate", "size").texts, ElementsAre("Filesize in Byte")) << "of the signature";
	EXPECT_THAT(
		pin("AsyncExecuteHTTP_Upload_PUT_REQUEST", "optionalRequestID").texts, ElementsAre(::testing::StartsWith("Your own RequestID.")));
	// Looked up in the functions that a comment names, by way of two others.
	const std::vector<std::string> urlTexts = {"at least 3 characters, sent as given."};
	EXPECT_EQ(pin("CreateHttpRequestGET", "url").texts, urlTexts);
	EXPECT_EQ(pin("CreateHttpRequestFileMultiUploadPUT", "url").texts, urlTexts);
}

TEST(ReferencePages, AreCompleteWellFormedAndLinked)
{
	const TempDir directory;
	const ProcessRun run = runProgram({"nodes", "--html", directory.path("new/pages")});
	EXPECT_EQ(run.err, "") << "a function lacks a text or an example";
	EXPECT_EQ(run.status, 0);
	EXPECT_EQ(faultsOf(directory.path("new/pages")), "");
	for (const NodeFacts& facts : allFacts())
	{
		EXPECT_TRUE(directory.exists("new/pages/" + pageName(facts))) << facts.name;
	}
}

TEST(ReferencePages, NothingInATextCanBreakOut)
{
	const std::string evil = "</p><script>\"a\" & 'b'\x01";
	const NodeFacts facts{NodeKind::Callable, "Sample.<script>\"a\" & 'b'", evil, evil, {evil},
		{{evil, evil, &PropertyTypeOf<FString>(), EParameterKind::Input, evil, false, {evil}}}, {{evil, evil, {evil}}}, evil, evil, evil};
	const TempDir directory;
	writeReference({{facts}, {{"", "1.lua", evil, "x." + evil}}, {{"x", evil, evil, "<script>", graphOf(facts)}}}, directory.path());
	EXPECT_EQ(faultsOf(directory.path()), "");
	for (const std::string& page : {pageName(facts), std::string("index.html")})
	{
		EXPECT_THAT(directory.read(page), ::testing::Not(HasSubstr("<script>")));
		EXPECT_THAT(directory.read(page), HasSubstr("&lt;script&gt;&quot;a&quot; &amp; &#39;b&#39;"));
	}
}

TEST(Reference, NamesItsGapsAndTheExampleThatIsMostAboutANodeFirst)
{
	Reference reference{{node("AsyncExecuteHTTP_GET_REQUEST"), node("AsyncExecuteHTTP_GET_REQUEST")}, {}};
	NodeFacts& bad = reference.nodes[1];
	bad.name = "Sample.stop";
	bad.texts.clear();
	bad.outcomes[1].texts.clear();
	reference.examples = {{"", "1.lua", "One", "-- Sample.stop{}\nx.AsyncExecuteHTTP_GET_REQUEST{}\nSample.stopped()"}};
	EXPECT_THAT(reference.gaps(),
		ElementsAre("Sample.stop has no text", "Sample.stop has no example", "Sample.stop does not say what OnFail means"));

	reference.examples = {
		{"", "1.lua", "Both", "x.AsyncExecuteHTTP_GET_REQUEST{} Sample.stop{}"}, {"", "2.lua", "One", "x.AsyncExecuteHTTP_GET_REQUEST{}"}};
	EXPECT_EQ(reference.examplesOf(reference.nodes[0]).at(0)->file, "2.lua");
	EXPECT_EQ(reference.examplesOf(bad).size(), 1u);
}

TEST(Graph, DrawingShowsDefaultsAndOutcomes)
{
	NodeFacts facts = node("AsyncExecuteHTTP_Download_REQUEST");
	facts.pins[0].defaultText = "<true>";
	facts.pins[2].defaultText = "E_RESUME";
	const std::string drawing = drawGraph(graphOf(facts));
	for (const char* shown : {">Async Execute HTTP Download REQUEST<", ">On Success<", ">On Fail<", ">Status Code<", ">&lt;true&gt;<",
			 ">Resume<", ">Game directory<"})
	{
		EXPECT_EQ(count(drawing, shown), 1u) << shown;
	}
	for (const char* isTicked : {"true", "false"})
	{
		facts.pins[0].type = &PropertyTypeOf<bool>();
		facts.pins[0].defaultText = isTicked;
		EXPECT_EQ(count(drawGraph(graphOf(facts)), "class=\"tick\""), *isTicked == 't' ? 1u : 0u);
	}
}

TEST(Graph, TextNamesWhatTheEditorLooksUp)
{
	const char* const description = R"(
bind onhttpRequestCompleteDelegate
	self < target.ReturnValue
	Delegate < answer.OutputDelegate
target = getCorvaneTarget
getCleanDirectory
	directoryType: E_ad
	filePath: a "b" < c:\d
AsyncExecuteHTTP_GET_REQUEST

answer = event Answered of onhttpRequestCompleteDelegate
print
	InString < answer.dataString
)";
	const std::string text = blueprintText(readGraph("Sample", description, allFacts()));
	for (const char* part :
		{R"(FunctionReference=(MemberParent="/Script/CoreUObject.Class'/Script/Corvane.CorvaneBPLibrary'",MemberName="getCorvaneTarget"))",
			R"(DelegateReference=(MemberParent="/Script/CoreUObject.Class'/Script/Corvane.CorvaneBPLibrary'",MemberName="onhttpRequestCompleteDelegate"))",
			R"(MemberParent="/Script/CoreUObject.Package'/Script/Corvane'",MemberName="httpRequestCompleteDelegate__DelegateSignature")",
			R"(PinSubCategoryObject="/Script/CoreUObject.Enum'/Script/Corvane.EFileFunctionsCorvDirectoryType'")", R"(DefaultValue="E_ad")",
			R"(DefaultValue="a \"b\" < c:\\d")", "bIsPureFunc=True",
			R"(ProxyClass="/Script/CoreUObject.Class'/Script/Corvane.AsyncNodeHttpRequest'")",
			R"(UserDefinedPin (PinName="byteData",PinType=(PinCategory="byte",ContainerType=Array,bIsReference=True,bIsConst=True))",
			R"(PinName="header",PinType.PinCategory="string",PinType.PinSubCategory="",PinType.PinSubCategoryObject=None,)"
			R"(PinType.PinSubCategoryMemberReference=(),PinType.PinValueType=(TerminalCategory="string"),PinType.ContainerType=Map,)"})
	{
		EXPECT_EQ(count(text, part), 1u) << part;
	}
	EXPECT_EQ(count(text, "LinkedTo=("), 12u) << "both ends of six wires";
}

TEST(Graph, DescriptionsThatAreWrongAreRefusedWithTheirLine)
{
	const std::pair<const char*, const char*> cases[] = {{"unheardOf", "line 1: there is no function or event unheardOf"},
		{"# x\n\tp: 1", "line 2: 'pin: value' or 'pin < node.pin' of a node is expected, found p: 1"},
		{"print\n\tpin: 1", "line 2: Print String has no such pin: pin"},
		{"getCleanDirectory\n\tdirectoryType: E_x", "line 2: EFileFunctionsCorvDirectoryType has no value E_x"},
		{"print\n\tInString < a.b\nprint", "line 2: no node has the name before the dot: a.b"},
		{"print\n\tInString < a.ReturnValue\na = deleteFile", "line 2: a.ReturnValue and InString are of different types"},
		{"a = print\n\nafter a.OnFail\nprint", "line 4: Print String has no such pin: OnFail"}};
	for (const auto& [description, fault] : cases)
	{
		try
		{
			readGraph("Sample", description, allFacts());
			ADD_FAILURE() << description;
		}
		catch (const std::runtime_error& refusal)
		{
			EXPECT_STREQ(refusal.what(), fault);
		}
	}
}
