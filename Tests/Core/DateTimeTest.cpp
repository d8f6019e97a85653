#include "Misc/DateTime.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

TEST(DateTime, IsWrittenAndReadAsText)
{
	struct FCase
	{
		int64 Ticks;
		const char* Text;
	};
	const FCase Cases[] = {
		{0, "0001-01-01T00:00:00.000Z"},
		{FDateTime::FromUnixTimestamp(0).GetTicks() - 10'000, "1969-12-31T23:59:59.999Z"},
		{FDateTime::FromUnixTimestamp(1'709'210'096).GetTicks() + 7'890'000, "2024-02-29T12:34:56.789Z"},
		{FDateTime::MaxValue().GetTicks() / 10'000 * 10'000, "9999-12-31T23:59:59.999Z"},
	};
	for (const FCase& Case : Cases)
	{
		EXPECT_EQ(utf8(FDateTime(Case.Ticks + 9'999).ToIso8601()), Case.Text) << "less than a millisecond is cut off";
		FDateTime Read;
		EXPECT_TRUE(FDateTime::ParseIso8601(*text(Case.Text), Read)) << Case.Text;
		EXPECT_EQ(Read.GetTicks(), Case.Ticks) << Case.Text;
	}
}

TEST(DateTime, RefusesWhatIsNoMoment)
{
	const char* const Texts[] = {"", "2024-02-29", "2024-02-29T12:34:56Z", "2024-02-29 12:34:56.789Z", "2024-02-29T12:34:56.789",
		"2024-02-29T12:34:56.789ZZ", "2023-02-29T12:34:56.789Z", "2024-13-01T00:00:00.000Z", "2024-00-01T00:00:00.000Z",
		"2024-01-00T00:00:00.000Z", "0000-01-01T00:00:00.000Z", "2024-01-01T24:00:00.000Z", "2024-01-01T00:60:00.000Z",
		"2024-01-01T00:00:60.000Z", "2024-01-01T00:00:0a.000Z", "-024-01-01T00:00:00.000Z"};
	for (const char* Text : Texts)
	{
		FDateTime Read(42);
		EXPECT_FALSE(FDateTime::ParseIso8601(*text(Text), Read)) << Text;
		EXPECT_EQ(Read.GetTicks(), 42) << Text;
	}
}
