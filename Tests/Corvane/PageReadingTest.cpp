#include "Rules/PageReading.h"
#include "ModuleFixture.h"

#include <fstream>

namespace
{
	/** A list of fields f0, f1, ... with the two that matter replaced. */
	std::string itemJson(int fields, const std::string& name, const std::string& size)
	{
		std::string page = "<script>x={itemJson:";
		for (int field = 0; field < fields; ++field)
		{
			const std::string content = field == 1 ? name : field == 27 ? size : "f" + std::to_string(field);
			page += (field == 0 ? "" : ",") + content;
		}
		return page;
	}

	/** @return the most KiB that this process has had in memory since the last call. */
	long peakMemory()
	{
		std::ifstream file("/proc/self/status");
		const std::string status{std::istreambuf_iterator<char>(file), {}};
		std::ofstream("/proc/self/clear_refs") << 5;
		return std::stol(status.substr(status.find("VmHWM:") + 6));
	}
} // namespace

TEST(PageReading, ReadsNameAndSizeOfADriveFile)
{
	struct Case
	{
		const char* what;
		std::string page;
		const char* name; // null = not readable
		int64 size;
	};
	const Case cases[] = {
		{"exactly enough fields", itemJson(28, "\"level.pak\"", "\"1572864\"]"), "level.pak", 1572864},
		{"one too few", itemJson(27, "\"level.pak\"", ""), nullptr, 0},
		{"hundreds", itemJson(900, "\"a\"", "5000000000"), "a", 5000000000},
		{"empty fields do not count", itemJson(28, "", "\"7\""), nullptr, 0},
		{"a size that is no number", itemJson(30, "\"a\"", "null"), "a", 0},
		{"quotes as entities stay", itemJson(28, "&quot;a&quot;", "1"), "&quot;a&quot;", 1},
		{"another case of the mark", "ITEMJSON:" + itemJson(28, "a", "3").substr(20), "a", 3},
		{"a size below nothing", itemJson(28, "\"a\"", "\"-1\""), nullptr, 0},
		{"no mark", "<html>,,,,,,</html>", nullptr, 0},
		{"nothing", "", nullptr, 0},
	};
	for (const Case& c : cases)
	{
		const FCorvFileInfo info = CorvaneRules::readFileInfo(text(c.page));
		EXPECT_EQ(info.bReadable, c.name != nullptr) << c.what;
		EXPECT_EQ(utf8(info.name), c.name ? c.name : "") << c.what;
		EXPECT_EQ(info.size, c.size) << c.what;
	}
	std::string page = itemJson(28, "\"a\"", "7");
	for (int field = 0; field < 10'000'000; ++field)
	{
		page += ",f";
	}
	const FString manyFields = text(page);
	peakMemory();
	[[maybe_unused]] const long before = peakMemory();
	EXPECT_EQ(CorvaneRules::readFileInfo(manyFields).size, 7);
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) // they need memory of their own
	EXPECT_LT(peakMemory() - before, 300'000) << "fields of no use take memory";
#endif
}

TEST(PageReading, FindsTheTokenOfAConfirmationPage)
{
	const std::pair<std::string, const char*> cases[] = {
		{"x;confirm=ab12&amp;id=", "ab12"},
		{"x;CONFIRM=ab12&id=1;confirm=second&", "ab12"},
		{"x;confirm=&id=1", ""},
		{"x;confirm=without-end", ""},
		{"&confirm=ab12&", ""},
		{"", ""},
	};
	for (const auto& [page, token] : cases)
	{
		EXPECT_EQ(utf8(CorvaneRules::confirmationToken(text(page))), token) << page;
	}
}

TEST(PageReading, FindsTheLinkOfAFilePage)
{
	const std::pair<std::string, const char*> cases[] = {
		{R"(<a id="download-url" class="b" href="https://cdn.example/f.zip"><img> Download</a> <a href="no"><b>)",
			"https://cdn.example/f.zip"},
		{R"(<a ID="Download-URL" HREF="/f"><IMG></A>)", "/f"},
		{R"(<a id="download-url" href=""><img></a>)", ""},
		{R"(<a href="/other"><img></a>)", "/other"}, // without the mark the first link that looks alike
		{"no markup at all", "no markup at all"},
		{"", ""},
	};
	for (const auto& [page, link] : cases)
	{
		EXPECT_EQ(utf8(CorvaneRules::downloadLink(text(page))), link) << page;
	}
	std::string manyQuotes; // taken away one by one from the front, they would keep the HTTP thread for hours
	for (int number = 0; number < 1'000'000; ++number)
	{
		manyQuotes += "a\"bcdef";
	}
	EXPECT_EQ(CorvaneRules::downloadLink(text(manyQuotes)).Len(), 6'000'000);
}

TEST(PageReading, ReadsTheSizeThatAPageShows)
{
	const auto page = [](const std::string& shown)
	{ return R"(<span class="uc-name-size"><a href="x">f.bin</a> )" + shown + "</span><span>(9G)</span>"; };
	const std::pair<std::string, int64> cases[] = {
		{page("(350M)"), 350 * 1048576},
		{page("(1,5G)"), 1610612736},
		{page("(1.5 G)"), 1610612736},
		{page("(12K)"), 12LL << 30}, // whatever is not in M
		{page("(0M)"), 0},
		{page("(-1M)"), -1048576},
		{page("(1e30G)"), INT64_MAX},
		{page("(nonsense)"), 0},
		{R"(<span class="uc-name-size">(2M))", 0},
		{"no size", 0},
	};
	for (const auto& [text8, size] : cases)
	{
		EXPECT_EQ(CorvaneRules::shownSize(text(text8)), size) << text8;
	}
}
