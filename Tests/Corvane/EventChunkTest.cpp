#include "Rules/EventChunk.h"
#include "ModuleFixture.h"

TEST(EventChunk, TextEndsAtAZeroAndSurvivesACutCharacter)
{
	const auto read = [](std::string_view bytes)
	{ return utf8(CorvaneRules::eventChunkText(reinterpret_cast<const uint8*>(bytes.data()), static_cast<int32>(bytes.size()))); };
	EXPECT_EQ(read("plain ü"), "plain ü");
	EXPECT_EQ(read(std::string_view("a\0b", 3)), "a");
	EXPECT_EQ(read("cut \xC3"), "cut \uFFFD");
	EXPECT_EQ(read("\xBC rest"), "\uFFFD rest");
}
