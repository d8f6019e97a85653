#include "Rules/DownloadRules.h"
#include "ModuleFixture.h"
#include "Rules/ShownAddress.h"
#include "Rules/Speed.h"

TEST(DownloadRules, ReadContentRanges)
{
	const std::pair<const char*, std::vector<int64>> cases[] = {
		{"bytes 0-99/1000", {0, 99, 1000}},
		{"Bytes 5-5/6", {5, 5, 6}},
		{"bytes 3000000000-3999999999/5000000000", {3000000000, 3999999999, 5000000000}}, // beyond 32 bits
		{"bytes 0-99/*", {0, 99, 0}},
		{"bytes */1000", {-1, -1, 1000}},
		{"bytes 0-99/-7", {0, 99, 0}},
		{"bytes 0-99/12x", {0, 99, 0}},
		{"bytes 0-99/99999999999999999999999", {0, 99, 0}},
		{"bytes -1-99/1000", {-1, -1, 1000}},
		{"bytes 0-99/", {0, 99, 0}},
		{"bytes 0-99", {-1, -1, 0}},
		{"items 0-9/10", {-1, -1, 10}},
		{"", {-1, -1, 0}},
		{"/", {-1, -1, 0}},
	};
	for (const auto& [value, numbers] : cases)
	{
		const FCorvContentRange range = CorvaneRules::contentRange(value);
		EXPECT_EQ((std::vector<int64>{range.first, range.last, range.total}), numbers) << value;
	}
}

TEST(DownloadRules, MeasureTheSpeedOnceASecond)
{
	FCorvSpeed speed;
	for (const auto& [seconds, megabytes, megabit] :
		{std::tuple(1.0, 5, 0), {1.3, 6, 0}, {2.0, 7, 16}, {2.9, 9, 16}, {4.0, 9, 16}, {6.0, 10, 8}})
	{
		speed.measure(static_cast<int64>(seconds * 1e7), int64(megabytes) << 20);
		EXPECT_NEAR(speed.megabit, megabit, 1e-4) << seconds;
	}
}

TEST(DownloadRules, ShowNoSecretsOfAnAddress)
{
	for (const auto& [url, shown] : {std::pair("http://h/a?b=c", "http://h/a"), {"https://u:p@h:1/a/b@c#d", "https://h:1/a/b@c"},
			 {"http://u@x@h", "http://h"}, {"abc", "abc"}, {"u:p@h/a", "h/a"}, {"", ""}})
	{
		EXPECT_EQ(utf8(CorvaneRules::shownAddress(url)), shown);
	}
}

TEST(DownloadRules, KeepStepSizesUsable)
{
	for (const auto& [given, usable] : {std::pair(-5, 10485760), {0, 10485760}, {1, 1}, {INT32_MAX, 1 << 30}})
	{
		EXPECT_EQ(CorvaneRules::usableStepSize(given), usable);
	}
}
