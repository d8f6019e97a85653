#include "Rules/EventChunk.h"
#include "ModuleFixture.h"

TEST(EventChunk, CutsWhatIsNew)
{
	struct Case
	{
		const char* name;
		int32 delivered;
		uint64 bytesReceived;
		int32 contentBytes;
		int32 begin, end;
	};
	const Case cases[] = {
		{"first piece", 0, 10, 10, 0, 10},
		{"second piece", 10, 25, 25, 10, 25},
		{"nothing new", 10, 10, 10, 10, 10},
		{"an upload's progress", 0, 0, 0, 0, 0},
		{"fewer bytes readable than reported", 10, 25, 20, 10, 20},
		{"more bytes readable than reported", 10, 25, 40, 10, 25},
		{"body began anew", 100, 30, 30, 0, 30},
		{"began anew, not readable yet", 100, 30, 0, 0, 0},
		{"reported, none readable", 10, 25, 5, 10, 10},
		{"beyond what an array holds", INT32_MAX - 1, uint64(1) << 40, INT32_MAX, INT32_MAX - 1, INT32_MAX},
	};
	for (const Case& c : cases)
	{
		const FCorvEventChunk chunk = CorvaneRules::nextEventChunk(c.delivered, c.bytesReceived, c.contentBytes);
		EXPECT_EQ(chunk.begin, c.begin) << c.name;
		EXPECT_EQ(chunk.end, c.end) << c.name;
	}
}

TEST(EventChunk, TextEndsAtAZeroAndSurvivesACutCharacter)
{
	const auto read = [](std::string_view bytes)
	{ return utf8(CorvaneRules::eventChunkText(reinterpret_cast<const uint8*>(bytes.data()), static_cast<int32>(bytes.size()))); };
	EXPECT_EQ(read("plain ü"), "plain ü");
	EXPECT_EQ(read(std::string_view("a\0b", 3)), "a");
	EXPECT_EQ(read("cut \xC3"), "cut \uFFFD");
	EXPECT_EQ(read("\xBC rest"), "\uFFFD rest");
}
