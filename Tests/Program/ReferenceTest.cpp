#include "CorvaneBPLibrary.h"
#include "NodeDrawing.h"
#include "ProcessRun.h"
#include "ReferencePages.h"
#include "TempDir.h"
#include "WriteReference.h"

#include <gmock/gmock.h>

using namespace Program;
using ::testing::HasSubstr;
using ::testing::Not;

namespace
{
	size_t count(const std::string& text, const std::string& part)
	{
		size_t found = 0;
		for (size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1))
		{
			++found;
		}
		return found;
	}

	/** @return what is wrong with the pages in a folder. */
	std::string faultsOf(const std::string& folder)
	{
		const ProcessRun check = runProcess({"/usr/bin/env", "python3", CORVANE_CHECK_PAGES, folder});
		return check.out + check.err;
	}

	/** A latent node with a pin of many kinds. */
	NodeFacts latentNode()
	{
		const std::vector<std::string> text{"text"};
		return {NodeKind::Latent, "Sample.start", "Start", "", "Sample|Nodes", text,
			{{"url", "Url", &PropertyTypeOf<FString>(), EParameterKind::Input, "http://x/?a&b", false, text},
				{"header", "Header", &PropertyTypeOf<TMap<FString, FString>>(), EParameterKind::Input, std::nullopt, true, text},
				{"action", "Action", &PropertyTypeOf<EHTTPCorvFileDownloadResumeType>(), EParameterKind::Input, "E_RESUME", false, text},
				{"flag", "Flag", &PropertyTypeOf<bool>(), EParameterKind::Input, std::nullopt, false, text},
				{"statusCode", "Status Code", &PropertyTypeOf<int32>(), EParameterKind::Output, std::nullopt, false, text}},
			{{"OnSuccess", "On Success", text}, {"OnFail", "On Fail", text}}};
	}
} // namespace

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
	const NodeFacts facts{NodeKind::Callable, "Sample.<script>\"a\" & 'b'", evil, evil, evil, {evil},
		{{evil, evil, &PropertyTypeOf<FString>(), EParameterKind::Input, evil, false, {evil}}}, {{evil, evil, {evil}}}};
	const TempDir directory;
	writeReference({{facts}, {{"", evil, evil, "x." + evil}}}, directory.path());
	EXPECT_EQ(faultsOf(directory.path()), "");
	for (const std::string& page : {pageName(facts), std::string("index.html")})
	{
		EXPECT_THAT(directory.read(page), Not(HasSubstr("<script>")));
		EXPECT_THAT(directory.read(page), HasSubstr("&lt;script&gt;&quot;a&quot; &amp; &#39;b&#39;"));
	}
}

TEST(ReferencePages, GapsAreNamedAndTheExampleThatIsMostAboutANodeComesFirst)
{
	NodeFacts bad = latentNode();
	bad.name = "Sample.stop";
	bad.texts.clear();
	bad.outcomes[1].texts.clear();
	Reference reference{{latentNode(), bad}, {{"", "1.lua", "One", "-- Sample.stop{}\nSample.start{}\nSample.stopped()"}}};
	EXPECT_EQ(reference.gaps(),
		(std::vector<std::string>{"Sample.stop has no text", "Sample.stop has no example", "Sample.stop does not say what OnFail means"}));

	reference.examples = {{"", "1.lua", "Both", "Sample.start{} Sample.stop{}"}, {"", "2.lua", "One", "Sample.start{}"}};
	EXPECT_EQ(reference.examplesOf(reference.nodes[0]).at(0)->file, "2.lua");
	EXPECT_EQ(reference.examplesOf(bad).size(), 1u);
}

TEST(NodeDrawing, ShowsPinsDefaultsAndOutcomes)
{
	const std::string execution = "fill=\"none\" stroke=\"#ffffff\" stroke-width=\"1.6\"";
	const std::string tick = "#4aa3ff";
	NodeFacts facts = latentNode();
	const std::string drawing = drawNode(facts);
	EXPECT_EQ(count(drawing, execution), 4u); // in, out and two outcomes
	for (const char* shown :
		{">Start<", ">On Success<", ">On Fail<", ">Status Code<", ">http://x/?a&amp;b<", ">Resume<", ">may stay unconnected<"})
	{
		EXPECT_EQ(count(drawing, shown), 1u) << shown;
	}
	EXPECT_EQ(count(drawing, tick), 0u);
	facts.pins[3].defaultText = "true";
	EXPECT_EQ(count(drawNode(facts), tick), 1u);

	facts.outcomes.clear();
	for (const auto& [kind, pins] : {std::pair(NodeKind::Pure, 0u), std::pair(NodeKind::Callable, 2u), std::pair(NodeKind::Event, 1u)})
	{
		facts.kind = kind;
		EXPECT_EQ(count(drawNode(facts), execution), pins);
	}
}
