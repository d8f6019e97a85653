#include "Rules/DownloadRules.h"
#include "ModuleFixture.h"
#include "Rules/ShownAddress.h"
#include "Rules/Speed.h"

TEST(DownloadRules, ReadContentRanges)
{
	struct Case
	{
		const char* value;
		int64 first, last, total;
	};
	const Case cases[] = {
		{"bytes 0-99/1000", 0, 99, 1000},
		{"Bytes 5-5/6", 5, 5, 6},
		{"bytes 3000000000-3999999999/5000000000", 3000000000, 3999999999, 5000000000}, // beyond 32 bits
		{"bytes 0-99/*", 0, 99, 0},
		{"bytes */1000", -1, -1, 1000},
		{"bytes 0-99/-7", 0, 99, 0},
		{"bytes 0-99/12x", 0, 99, 0},
		{"bytes 0-99/99999999999999999999999", 0, 99, 0},
		{"bytes -1-99/1000", -1, -1, 1000},
		{"bytes 0-99/", 0, 99, 0},
		{"bytes 0-99", -1, -1, 0},
		{"items 0-9/10", -1, -1, 10},
		{"", -1, -1, 0},
		{"/", -1, -1, 0},
	};
	for (const Case& c : cases)
	{
		const FCorvContentRange range = CorvaneRules::contentRange(c.value);
		EXPECT_EQ(range.first, c.first) << c.value;
		EXPECT_EQ(range.last, c.last) << c.value;
		EXPECT_EQ(range.total, c.total) << c.value;
	}
}

TEST(DownloadRules, AskForPartsWithBothEndsIncluded)
{
	struct Case
	{
		int64 start, step, full;
		const char* range;
	};
	const Case cases[] = {
		{0, 10485760, 0, "bytes=0-0"},
		{500, 10485760, -1, "bytes=0-0"},
		{0, 1048576, 5000000, "bytes=0-1048576"},
		{0, 1048576, 1048576, "bytes=0-1048576"},
		{0, 1048576, 1000000, "bytes=0-"},
		{10485761, 10485760, 20971521, "bytes=10485761-20971521"},
		{10485761, 10485760, 20971520, "bytes=10485761-"},
		{5368709120, 1 << 30, 5368709121, "bytes=5368709120-"},
	};
	for (const Case& c : cases)
	{
		EXPECT_EQ(utf8(CorvaneRules::stepRange(c.start, c.step, c.full)), c.range);
	}
	EXPECT_EQ(utf8(CorvaneRules::rangeFrom(5368709120)), "bytes=5368709120-");
}

TEST(DownloadRules, MeasureTheSpeedOnceASecond)
{
	struct Case
	{
		double seconds;
		int64 bytes;
		float megabit;
	};
	FCorvSpeed speed;
	for (const Case& c : {Case{1, 5 << 20, 0}, {1.3, 6 << 20, 0}, {2, 7 << 20, 16}, {2.9, 9 << 20, 16}, {4, 9 << 20, 16}, {6, 10 << 20, 8}})
	{
		speed.measure(static_cast<int64>(c.seconds * 1e7), c.bytes);
		EXPECT_NEAR(speed.megabit, c.megabit, 1e-4) << c.seconds;
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
	EXPECT_EQ(CorvaneRules::usableStepSize(-5), 10485760);
	EXPECT_EQ(CorvaneRules::usableStepSize(0), 10485760);
	EXPECT_EQ(CorvaneRules::usableStepSize(1), 1);
	EXPECT_EQ(CorvaneRules::usableStepSize(INT32_MAX), 1 << 30);
}
