#include "Rules/DownloadRules.h"
#include "Downloads/DownloadTargets.h"
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
		EXPECT_EQ(CorvaneRules::toldSize({206, range, 0}), numbers[2] > 0 ? numbers[2] : numbers[1] + 1) << value;
	}
}

TEST(DownloadRules, TellWhatBecomesOfABody)
{
	using enum ECorvDownloadAction;
	const std::tuple<FCorvDownloadAnswer, FCorvDownloadTarget, ECorvDownloadAction, bool, bool> cases[] = {
		// answer (status, range, bytes), target (start, size, own range), what becomes of it, kept when broken, a step
		{{200, {}, 5}, {0, 0}, Append, true, false},
		{{200, {}, 5}, {0, 3}, Refuse, false, false}, // a file that has appeared meanwhile
		{{200, {}, 5}, {3, 3}, Replace, false, false},
		{{206, {3, 7, 8}, 5}, {3, 3}, Append, true, true},
		{{206, {3, -1, 8}, 5}, {3, 3}, Append, true, true},
		{{206, {3, 7, 0}, 5}, {3, 3}, Append, true, false}, // a step has to know where the end is
		{{206, {4, 8, 9}, 5}, {3, 4}, Append, true, false}, // the file has grown since the step was asked for
		{{206, {3, 7, 8}, 4}, {3, 4}, Refuse, false, false},
		{{206, {3, 7, 9}, 6}, {3, 3}, Refuse, false, false}, // beyond its span
		{{206, {3, 9, 8}, 6}, {3, 3}, Refuse, false, false}, // beyond the file
		{{206, {3, 7, 8}, 0}, {3, 3}, Refuse, false, false},
		{{206, {3, 7, 8}, 5}, {3, 8}, Complete, false, false},
		{{206, {3, 7, 8}, 5}, {3, 9}, Refuse, false, false},
		{{416, {-1, -1, 8}, 2}, {8, 8}, Complete, false, false},
		{{404, {}, 5}, {0, 0}, Nothing, false, false},
		{{200, {}, 0}, {0, 0}, Nothing, false, false},
		{{206, {2, 6, 99}, 5}, {0, 0}, Refuse, false, false},
		{{206, {10, 14, 99}, 5}, {0, 0, true}, Append, true, false}, // a part of the script's own choice
		{{206, {10, 14, 99}, 5}, {0, 10, true}, Append, true, false},
		{{206, {10, 14, 99}, 5}, {0, 9, true}, Refuse, false, false},
		{{200, {}, 5}, {0, 9, true}, Refuse, false, false},
		{{206, {10, 14, 99}, 0}, {0, 10, true}, Nothing, false, false},
	};
	for (const auto& [answer, target, action, isKept, isStep] : cases)
	{
		EXPECT_EQ(CorvaneRules::planDownload(answer, target), action) << answer.range.first << " " << target.size;
		EXPECT_EQ(CorvaneRules::areReceivedBytesKept(answer, target), isKept) << answer.range.first << " " << target.size;
		EXPECT_EQ(CorvaneRules::isStep(answer, target), isStep) << answer.range.first << " " << target.size;
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
	for (const auto& [url, shown] :
		{std::pair("http://h/a?b=c", "http://h/a"), {"https://u:p@h:1/a/b@c#d", "https://h:1/a/b@c"}, {"http://u@x@h", "http://h"},
			{"abc", "abc"}, {"u:p@h/a", "h/a"}, {"u:p@h/a://b", "h/a://b"}, {"", ""}, {"http://h/a\r\nb", "http://h/a\uFFFD\uFFFDb"}})
	{
		EXPECT_EQ(utf8(CorvaneRules::shownAddress(url)), shown);
	}
	EXPECT_EQ(utf8(CorvaneRules::shownAddress(text(std::string(4 << 20, '@') + "h"))), "h"); // a page of them is no hour's work
	EXPECT_EQ(utf8(CorvaneRules::shownAddress(text(std::string(5000, 'a')))), std::string(1000, 'a') + "...");
}

TEST(DownloadRules, KeepStepSizesUsable)
{
	for (const auto& [given, usable] : {std::pair(-5, 10485760), {0, 10485760}, {1, 1}, {INT32_MAX, 1 << 30}})
	{
		EXPECT_EQ(CorvaneRules::usableStepSize(given), usable);
	}
}

TEST(DownloadTargets, AreWrittenByOneAtATimeAndByTheLatestOnly)
{
	FCorvDownloadTargets targets;
	const auto granted = [&](int64 download) { return FCorvDownloadPermission(targets, "/d/a", download).isGranted(); };
	targets.claim("/d/a", 1);
	{
		const FCorvDownloadPermission first(targets, "/d/../d/a", 1);
		EXPECT_TRUE(first.isGranted());
		EXPECT_FALSE(granted(1));
		targets.release("/d/a", 1);
		targets.claim("/d/a", 2);
		EXPECT_FALSE(granted(2)) << "the first still writes";
	}
	EXPECT_FALSE(granted(1));
	EXPECT_TRUE(granted(2));
	targets.release("/d/a", 1);
	EXPECT_EQ(targets.claimed().Num(), 1) << "the file is another's";
	targets.release("/d/a", 2);
	EXPECT_TRUE(targets.claimed().IsEmpty() && !granted(2));
}
