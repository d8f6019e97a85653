#include "CorvaneBPLibrary.h"
#include "Html.h"
#include "HtmlCheck.h"
#include "NodeDrawing.h"
#include "ProcessRun.h"
#include "ReferencePages.h"
#include "TempDir.h"

#include <gmock/gmock.h>

#include <filesystem>

using namespace Program;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
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

	std::map<std::string, CheckedPage> pages;
	for (const auto& entry : std::filesystem::directory_iterator(directory.path("new/pages")))
	{
		const std::string name = entry.path().filename().string();
		pages[name] = name.ends_with(".html") ? checkHtml(directory.read("new/pages/" + name)) : CheckedPage();
		EXPECT_THAT(pages[name].faults, IsEmpty()) << name;
	}
	for (const auto& [name, page] : pages)
	{
		for (const std::string& link : page.links)
		{
			const std::string file = link.substr(0, link.find('#'));
			const auto target = pages.find(file.empty() ? name : file);
			ASSERT_NE(target, pages.end()) << link << " in " << name;
			EXPECT_TRUE(link == file || target->second.ids.contains(link.substr(file.size() + 1))) << link << " in " << name;
		}
		const bool isNode = name.ends_with(".html") && name != "index.html";
		EXPECT_TRUE(!isNode || ::testing::Value(pages["index.html"].links, ::testing::Contains(name))) << name;
	}
	for (const NodeFacts& facts : allFacts())
	{
		EXPECT_TRUE(pages.contains(pageName(facts))) << facts.name;
	}
}

TEST(ReferencePages, NothingInATextCanBreakOut)
{
	const std::string evil = "</p><script>\"a\" & 'b'\x01";
	NodeFacts facts{NodeKind::Callable, "Sample." + evil, evil, evil, evil, {evil},
		{{evil, evil, &PropertyTypeOf<FString>(), EParameterKind::Input, evil, false, {evil}}}, {{evil, evil, {evil}}}};
	const Reference reference{{facts}, {{"", evil, evil, "x." + evil}}};
	for (const std::string& page : {nodePage(reference, facts), indexPage(reference)})
	{
		EXPECT_THAT(checkHtml(page).faults, IsEmpty());
		EXPECT_THAT(page, Not(HasSubstr("<script>")));
		EXPECT_THAT(page, HasSubstr("&lt;script&gt;&quot;a&quot; &amp; &#39;b&#39;"));
		EXPECT_THAT(page, Not(HasSubstr("\x01")));
	}
}

TEST(ReferencePages, GapsAreNamedOneByOne)
{
	NodeFacts good = latentNode();
	NodeFacts bad = latentNode();
	bad.name = "Sample.stop";
	bad.texts.clear();
	bad.outcomes[1].texts.clear();
	const Reference reference{{good, bad}, {{"", "1.lua", "One", "-- Sample.stop{}\nSample.start{}\nSample.stopped()"}}};
	EXPECT_EQ(reference.gaps(),
		(std::vector<std::string>{"Sample.stop has no text", "Sample.stop has no example", "Sample.stop does not say what OnFail means"}));
}

TEST(ReferencePages, TheExampleThatIsMostAboutANodeComesFirst)
{
	NodeFacts start = latentNode();
	NodeFacts stop = latentNode();
	stop.name = "Sample.stop";
	const Reference reference{
		{start, stop}, {{"", "1.lua", "Both", "Sample.start{} Sample.stop{}"}, {"", "2.lua", "One", "Sample.start{}"}}};
	const std::vector<const Example*> examples = reference.examplesOf(start);
	ASSERT_EQ(examples.size(), 2u);
	EXPECT_EQ(examples[0]->file, "2.lua");
	EXPECT_EQ(reference.examplesOf(stop).size(), 1u);
}

TEST(NodeDrawing, ShowsPinsDefaultsAndOutcomes)
{
	const std::string execution = "fill=\"none\" stroke=\"#ffffff\" stroke-width=\"1.6\"";
	NodeFacts facts = latentNode();
	std::string drawing = drawNode(facts);
	EXPECT_EQ(count(drawing, execution), 4u); // in, out and two outcomes
	for (const char* shown : {">Start<", ">On Success<", ">On Fail<", ">Status Code<", ">http://x/?a&amp;b<", ">Resume<"})
	{
		EXPECT_EQ(count(drawing, shown), 1u) << shown;
	}
	EXPECT_EQ(count(drawing, ">may stay unconnected<"), 1u);
	EXPECT_THAT(drawing, Not(HasSubstr("#4aa3ff"))); // no tick
	facts.pins[3].defaultText = "true";
	EXPECT_THAT(drawNode(facts), HasSubstr("#4aa3ff"));

	facts.kind = NodeKind::Pure;
	facts.outcomes.clear();
	EXPECT_EQ(count(drawNode(facts), execution), 0u);
	facts.kind = NodeKind::Callable;
	EXPECT_EQ(count(drawNode(facts), execution), 2u);
	facts.kind = NodeKind::Event;
	EXPECT_EQ(count(drawNode(facts), execution), 1u);
}
