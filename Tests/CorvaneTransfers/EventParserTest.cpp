#include "Events/EventParser.h"
#include "Attempts/Utf8Text.h"
#include "TextSupport.h"

#include <gtest/gtest.h>

namespace
{
	using Event = std::vector<std::string>; // ID, type, data
	using Events = std::vector<Event>;

	/** Feeds a parser with pieces, and writes down what comes of them. */
	class Reader
	{
	public:
		explicit Reader(int32 most = 1024)
			: parser(most)
		{
		}
		Reader& feed(const std::string& piece)
		{
			const auto* bytes = reinterpret_cast<const uint8*>(piece.data());
			for (int64 read = 0, taken = 0, size = static_cast<int64>(piece.size()); read < size && !tooLong; read += taken)
			{
				const ECorvaneEventStep step = parser.Read(bytes + read, size - read, taken);
				tooLong = step == ECorvaneEventStep::TooLong;
				if (step == ECorvaneEventStep::Event)
				{
					events.push_back({bytesOf(parser.GetLastID()), bytesOf(parser.GetType()), bytesOf(parser.GetData())});
				}
			}
			return *this;
		}

		FCorvaneEventParser parser;
		Events events;
		bool tooLong = false;
	};

	struct EventCase
	{
		const char* what;
		std::string stream;
		Events events;
		int64 retry = -1;
	};

	Event plain(const std::string& data)
	{
		return {"", "", data};
	}

	const std::string mark = "\xEF\xBB\xBF", zero(1, '\0');

	const std::vector<EventCase> eventCases = {
		{"a mark at the beginning is none of the text", mark + "data:1\n\n" + mark + "data:2\n\ndata:3\n\n", {plain("1"), plain("3")}},
		{"of two marks the second is text", mark + mark + "data:1\n\ndata:2\n\n", {plain("2")}},
		{"half a mark is text",
			"\xEF\xBB"
			"data:1\n\ndata:2\n\n",
			{plain("2")}},
		{"comments, long and empty, between the lines of an event",
			"data:1\r:" + zero + "\n:\r\ndata:2\n:" + std::string(900, 'x') + "\rdata:3\n:data:fail\r:" + std::string(900, 'x') +
				"\ndata:4\n\n",
			{plain("1\n2\n3\n4")}},
		{"data without a colon, without a value, with blanks", "data:\n\ndata\ndata\n\ndata:test\n\n",
			{plain(""), plain("\n"), plain("test")}},
		{"one blank behind the colon goes, others stay", "data:\ttest\rdata: \ndata:  two\ndata:test\n\n", {plain("\ttest\n\n two\ntest")}},
		{"an empty type is no type", "event: \ndata:data\n\nevent\ndata:x\n\n", {plain("data"), plain("x")}},
		{"a type holds for one event, the last one wins", "event:a\nevent:test\ndata:x\n\ndata:x\n\n", {{"", "test", "x"}, plain("x")}},
		{"a type without data goes with its event", "event:test\n\ndata:x\n\n", {plain("x")}},
		{"an ID holds until another one comes, also an empty one",
			"id:1\ndata:a\n\ndata:b\n\nid\ndata:c\n\nid: 2\n\ndata:d\n\nid:\ndata:e\n\n",
			{{"1", "", "a"}, {"1", "", "b"}, plain("c"), {"2", "", "d"}, plain("e")}},
		{"an ID with a zero byte is none", "id:1\nid:2" + zero + "3\ndata:a\n\nid:" + zero + "\nid:" + zero + "4\ndata:b\n\n",
			{{"1", "", "a"}, {"1", "", "b"}}},
		{"a long ID, and one with a zero byte far behind", "id:0123456789abcdef\ndata:a\n\nid:0123456789abcde" + zero + "\ndata:b\n\n",
			{{"0123456789abcdef", "", "a"}, {"0123456789abcdef", "", "b"}}},
		{"names are told apart to the letter",
			"data:" + zero + "\ndata" + zero + ":no\n data:no\nDATA:no\ndata :no\ndatadata:no\ndat:no\ndata:  2\rData:1\ndata" + zero +
				":2\ndata:1\r" + zero + "data:4\nda-ta:3\rdata_5\ndata:3\rdata:\r\n data:32\ndata:4\n\n",
			{plain(zero + "\n 2\n1\n3\n\n4")}},
		{"what has another name is nothing", "data:a\nfoo: b\nbare words\ndata:c\n\n", {plain("a\nc")}},
		{"only digits are a time to wait", "retry:3000\nretry:1000x\nretry:\nretry\nretry: 1 \nretry:-5\ndata:x\n\n", {plain("x")}, 3000},
		{"a time needs no event, and has a limit", "retry: 99999999999999999999999999", {}, -1},
		{"a time that never comes to an end", "retry: 99999999999999999999999999\n", {}, 2147483647},
		{"nothing", "", {}},
		{"all line ends", "data:test\r\ndata\ndata:test\r\n\r\n", {plain("test\n\ntest")}},
		{"a carriage return ends a line at once", "data:a\r\rdata:b\r\n\ndata:c\n\r", {plain("a"), plain("b"), plain("c")}},
		{"zero bytes are data", "data:" + zero + "\n\n\n\n", {plain(zero)}},
		{"an event that does not end is none", "id:1\ndata:a\n\nid:2\ndata:b", {{"1", "", "a"}}},
		{"and neither is one whose last line does", "data:a\n\ndata:b\n", {plain("a")}},
		{"no letters but ASCII in a name", "data:ok\xE2\x80\xA6\nd\xC3\xA4ta:no\n\n", {plain("ok\xE2\x80\xA6")}},
	};
} // namespace

TEST(EventParser, ReadsTheSameEventsHoweverTheStreamIsCut)
{
	for (const EventCase& each : eventCases)
	{
		SCOPED_TRACE(each.what);
		Reader bytewise;
		for (size_t cut = 0; cut <= each.stream.size(); ++cut)
		{
			Reader reader;
			reader.feed(each.stream.substr(0, cut)).feed(each.stream.substr(cut));
			ASSERT_EQ(reader.events, each.events) << "cut at " << cut;
			ASSERT_EQ(reader.parser.GetRetry(), each.retry) << "cut at " << cut;
			bytewise.feed(each.stream.substr(cut, 1));
		}
		EXPECT_EQ(bytewise.events, each.events);
	}
}

TEST(EventParser, CountsNoIDOfAnEventThatNeverEndedAndKeepsNoneOfIt)
{
	Reader reader;
	reader.feed("id:1\ndata:a\n\nid:2\nevent:b\ndata:b\nda");
	EXPECT_EQ(bytesOf(reader.parser.GetLastID()), "1");
	reader.parser.BeginStream();
	reader.feed(mark + "data:c\n\n");
	EXPECT_EQ(reader.events, (Events{{"1", "", "a"}, {"1", "", "c"}}));
}

TEST(EventParser, StopsAboveItsLimitAndNotAtIt)
{
	constexpr int32 most = 20;
	const auto isTooLong = [](const std::string& stream)
	{
		bool result[2] = {};
		Reader whole(most), bytewise(most);
		result[0] = whole.feed(stream).tooLong;
		for (const char byte : stream)
		{
			bytewise.feed({byte});
		}
		EXPECT_EQ(bytewise.tooLong, result[0]);
		return result[0];
	};
	const std::string full(most - 5, 'x'); // behind "data:"
	EXPECT_FALSE(isTooLong("data:" + full + "\n\n:" + std::string(most - 1, 'x') + "\n"));
	EXPECT_TRUE(isTooLong("data:" + full + "x\n\n"));
	EXPECT_TRUE(isTooLong(std::string(most + 1, ':')));
	EXPECT_FALSE(isTooLong("data:" + full + "\ndata:yyyy\n\n")); // 15, a line feed and 4
	EXPECT_TRUE(isTooLong("data:" + full + "\ndata:yyyyy\n\n"));
}

TEST(Utf8Text, ReplacesTheLongestBeginningsOfWhatIsNoCharacter)
{
	struct EventCase
	{
		std::string bytes, text;
	};
	const std::string r = "\xEF\xBF\xBD"; // what stands for it
	const EventCase eventCases[] = {
		{"", ""},
		{"all of ASCII, and more than eight of it", "all of ASCII, and more than eight of it"},
		{"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80 \xEF\xBF\xBF \xF4\x8F\xBF\xBF",
			"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80 \xEF\xBF\xBF \xF4\x8F\xBF\xBF"},
		{"\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xF0\x90\x80\x80",
			"\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xF0\x90\x80\x80"},
		{"a\xF0\x9F\x98"
		 "b",
			"a" + r + "b"},
		{"\xE2\x82", r},
		{"\xE2\x82\xE2\x82\xAC", r + "\xE2\x82\xAC"},
		{"\xC0\xAF", r + r},
		{"\xE0\x9F\x80", r + r + r},
		{"\xED\xA0\x80", r + r + r},
		{"\xF0\x8F\xBF\xBF", r + r + r + r},
		{"\xF4\x90\x80\x80", r + r + r + r},
		{"\xF5\x80\xFF", r + r + r},
		{"\x80\xBF"
		 "a",
			r + r + "a"},
		{"\xF1\x80\x80\xC3", r + r},
		{std::string("a\0b", 3), std::string("a\0b", 3)},
	};
	for (const EventCase& each : eventCases)
	{
		EXPECT_EQ(
			utf8(CorvaneUtf8::Decode(reinterpret_cast<const uint8*>(each.bytes.data()), static_cast<int64>(each.bytes.size()))), each.text);
	}
}
