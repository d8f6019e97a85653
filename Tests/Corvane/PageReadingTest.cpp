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
	const std::tuple<const char*, std::string, const char*, int64> cases[] = {
		// a name of null = not readable
		{"exactly enough fields", itemJson(28, "\"level.pak\"", "\"1572864\"]"), "level.pak", 1572864},
		{"one too few", itemJson(27, "\"level.pak\"", ""), nullptr, 0},
		{"hundreds", itemJson(900, "\"a\"", "5000000000"), "a", 5000000000},
		{"empty fields do not count", itemJson(28, "", "\"7\""), nullptr, 0},
		{"a size that is no number", itemJson(30, "\"a\"", "null"), "a", 0},
		{"quotes as entities stay", itemJson(28, "&quot;a&quot;", "1"), "&quot;a&quot;", 1},
		{"another case of the mark", "ITEMJSON:" + itemJson(28, "a", "3").substr(20), "a", 3},
		{"a size below nothing", itemJson(28, "\"a\"", "\"-1\""), "a", -1},
		{"no mark", "<html>,,,,,,</html>", nullptr, 0},
		{"nothing", "", nullptr, 0},
	};
	for (const auto& [what, content, name, size] : cases)
	{
		const FCorvFileInfo info = CorvaneRules::readFileInfo(text(content));
		EXPECT_EQ(info.bReadable, name != nullptr) << what;
		EXPECT_EQ(utf8(info.name), name ? name : "") << what;
		EXPECT_EQ(info.size, size) << what;
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

TEST(PageReading, FindsTokenLinkAndSize)
{
	const auto token = [](const FString& page) { return CorvaneRules::confirmationToken(page); };
	const auto link = [](const FString& page) { return CorvaneRules::downloadLink(page); };
	const auto size = [](const FString& page) { return text(std::to_string(CorvaneRules::shownSize(page))); };
	const auto shown = [](const std::string& told)
	{ return R"(<span class="uc-name-size"><a href="x">f.bin</a> )" + told + "</span><span>(9G)</span>"; };
	const std::tuple<FString (*)(const FString& page), std::string, const char*> cases[] = {
		{token, "x;confirm=ab12&amp;id=", "ab12"},
		{token, "x;CONFIRM=ab12&id=1;confirm=second&", "ab12"},
		{token, "x;confirm=&id=1", ""},
		{token, "x;confirm=without-end", ""},
		{token, "&confirm=ab12&", ""},
		{token, "", ""},
		{link, R"(<a id="download-url" class="b" href="https://cdn.example/f.zip"><img> Download</a> <a href="no"><b>)",
			"https://cdn.example/f.zip"},
		{link, R"(<a ID="Download-URL" HREF="/f"><IMG></A>)", "/f"},
		{link, R"(<a id="download-url" href=""><img></a>)", ""},
		{link, R"(<a href="/other"><img></a>)", "/other"}, // without the mark the first link that looks alike
		{link, "no markup at all", "no markup at all"},
		{link, "", ""},
		{size, shown("(350M)"), "367001600"},
		{size, shown("(1,5G)"), "1610612736"},
		{size, shown("(1.5 G)"), "1610612736"},
		{size, shown("(12K)"), "12884901888"}, // whatever is not in M
		{size, shown("(0M)"), "0"},
		{size, shown("(-1M)"), "-1048576"},
		{size, shown("(1e30G)"), "9223372036854775807"},
		{size, shown("(nonsense)"), "0"},
		{size, shown("(nanG)"), "0"},
		{size, R"(<span class="uc-name-size">(2M))", "0"},
		{size, "no size", "0"},
	};
	for (const auto& [find, page, found] : cases)
	{
		EXPECT_EQ(utf8(find(text(page))), found) << page;
	}
	std::string manyQuotes; // taken away one by one from the front, they would keep the HTTP thread for hours
	for (int number = 0; number < 1'000'000; ++number)
	{
		manyQuotes += "a\"bcdef";
	}
	EXPECT_EQ(CorvaneRules::downloadLink(text(manyQuotes)).Len(), 6'000'000);
}
