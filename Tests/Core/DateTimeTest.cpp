#include "Misc/DateTime.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

TEST(DateTime, IsWrittenAndReadAsTextUnlessItIsNoMoment)
{
	const int64 Before1970 = FDateTime::FromUnixTimestamp(0).GetTicks() - 10'000;
	EXPECT_EQ(utf8(FDateTime(Before1970 + 9'999).ToIso8601()), "1969-12-31T23:59:59.999Z") << "less than a millisecond is cut off";
	FDateTime Read;
	EXPECT_TRUE(FDateTime::ParseIso8601(TEXT("1969-12-31T23:59:59.999Z"), Read));
	for (const char* Text :
		{"", "2024-02-29", "2024-02-29T12:34:56Z", "2024-02-29 12:34:56.789Z", "2024-02-29T12:34:56.789", "2024-02-29T12:34:56.789ZZ",
			"2023-02-29T12:34:56.789Z", "2024-13-01T00:00:00.000Z", "0000-01-01T00:00:00.000Z", "2024-01-01T24:00:00.000Z",
			"2024-01-01T00:60:00.000Z", "2024-01-01T00:00:60.000Z", "2024-01-01T00:00:0a.000Z", "-024-01-01T00:00:00.000Z"})
	{
		EXPECT_FALSE(FDateTime::ParseIso8601(*text(Text), Read)) << Text;
		EXPECT_EQ(Read.GetTicks(), Before1970) << Text;
	}
}
