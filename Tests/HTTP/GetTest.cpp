#include "HttpFixture.h"

#include <atomic>

using testing::ElementsAre;

namespace
{
	class Get : public HttpTest
	{
	};

	/** The request head without the lines that every request has. */
	std::string ownHeadersOf(const std::string& head, const RawServer& server)
	{
		const std::string start = "GET / HTTP/1.1\r\n" + firstHeaders(server.authority()) + "User-Agent: test\r\n";
		EXPECT_EQ(head.substr(0, start.size()), start);
		return head.substr(std::min(start.size(), head.size()));
	}
} // namespace

TEST_F(Get, PutsExactlyTheseBytesOnTheWire)
{
	RawServer server(answering([](const std::string&) { return answer(200, "hello", "X-One: 1\r\nX-Two:  two words \r\n"); }));
	Exchange& exchange = make(server.url("/a/b?c=d%20e&f#not-sent"));
	exchange.request().SetHeader(text("Range"), text("bytes=0-9"));
	exchange.request().SetHeader(text("X-Empty"), text(""));
	exchange.request().SetHeader(text("Content-Type"), text("application/x-www-form-urlencoded"));
	exchange.request().SetHeader(text("X-Text"), text("gr\xC3\xBC\xC3\x9F \t x"));
	exchange.request().SetHeader(text("RANGE"), text("bytes=1-2"));
	run(exchange);

	EXPECT_THAT(server.requests(), ElementsAre("GET /a/b?c=d%20e&f HTTP/1.1\r\n" + firstHeaders(server.authority()) +
											   "User-Agent: test\r\nRANGE: bytes=1-2\r\nContent-Type: application/x-www-form-urlencoded\r\n"
											   "X-Text: gr\xC3\xBC\xC3\x9F \t x\r\nContent-Length: 0\r\n\r\n"));
	EXPECT_TRUE(exchange.succeeded());
	EXPECT_EQ(exchange.response(), exchange.request().GetResponse());
	EXPECT_EQ(exchange.request().GetFailureReason(), EHttpFailureReason::None);
	EXPECT_EQ(exchange.code(), 200);
	EXPECT_EQ(exchange.body(), "hello");
	EXPECT_EQ(utf8(exchange.response()->GetContentAsString()), "hello");
	EXPECT_EQ(exchange.response()->GetContentLength(), 5u);
}

TEST_F(Get, ReadsTheHeadersOfTheAnswer)
{
	RawServer server(answering([](const std::string&)
		{ return answer(200, "", "X-Twice: a\r\nEMPTY:\r\nx-twice:b\r\nX-Bad: \xFFz\r\nX-Blanks: \t in  side \t\r\n"); }));
	Exchange& exchange = get(server.url());
	EXPECT_EQ(exchange.header("x-TWICE"), "a, b");
	EXPECT_EQ(exchange.header("X-Bad"), "\xEF\xBF\xBDz");
	EXPECT_EQ(exchange.header("X-Blanks"), "in  side");
	EXPECT_EQ(exchange.header("X-Absent"), "");
	std::vector<std::string> lines;
	for (const FString& line : exchange.response()->GetAllHeaders())
	{
		lines.push_back(utf8(line));
	}
	EXPECT_THAT(lines, ElementsAre("Content-Length: 0", "X-Twice: a, b", "EMPTY: ", "X-Bad: \xEF\xBF\xBDz", "X-Blanks: in  side"));
}

TEST_F(Get, RefusesHeadersThatWouldWriteOthers)
{
	struct Case
	{
		std::string name, value;
		std::string wire; // empty = refused
	};
	const std::string nul(1, '\0');
	const Case cases[] = {
		{"X", "a\r\nInjected: 1", ""},
		{"X", "a\nInjected: 1", ""},
		{"X", "a\rb", ""},
		{"X", "a" + nul + "b", ""},
		{"X",
			"a\x01"
			"b",
			""},
		{"X", "a\x7F", ""},
		{"X\r\nInjected", "1", ""},
		{"X" + nul, "1", ""},
		{"X Y", "1", ""},
		{"X:Y", "1", ""},
		{"X;", "1", ""},
		{"\xC3\xBC", "1", ""},
		{"", "1", ""},
		{"Content-Length", "3\r\n\r\nabc", ""},
		{"x!#$%&'*+-.^_`|~9", "\ta \xE2\x82\xAC b", "x!#$%&'*+-.^_`|~9: \ta \xE2\x82\xAC b\r\n"},
		{"X", "a; b: c", "X: a; b: c\r\n"},
	};
	RawServer server(answering([](const std::string&) { return answer(200, "x"); }));
	size_t sent = 0;
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name + "=" + each.value);
		Exchange& exchange = make(server.url());
		exchange.request().SetHeader(text(each.name), text(each.value));
		const int errors = Log.count("LogHttp", ELogVerbosity::Error);
		EXPECT_EQ(exchange.start(), !each.wire.empty());
		EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Error) - errors, each.wire.empty() ? 1 : 0);
		ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
		EXPECT_EQ(exchange.succeeded(), !each.wire.empty());
		sent += !each.wire.empty();
		ASSERT_EQ(server.requests().size(), sent);
		if (!each.wire.empty())
		{
			EXPECT_EQ(ownHeadersOf(server.requests().back(), server), each.wire + "Content-Length: 0\r\n\r\n");
		}
	}
}

TEST_F(Get, SendsOnlyCleanWebUrls)
{
	RawServer server(answering([](const std::string&) { return answer(200, "x"); }));
	struct Case
	{
		std::string url;
		std::string target; // empty = refused
	};
	const std::string here = server.authority();
	const Case cases[] = {
		{"http://" + here, "/"},
		{"HtTp://" + here + "?q", "/?q"},
		{"http://" + here + "/\xC3\xBC?\xE2\x82\xAC", "/%c3%bc?%e2%82%ac"},
		{"http://" + here + "/a%0D%0Ab", "/a%0D%0Ab"},
		{"http://" + here + "/a b", ""},
		{"http://" + here + "/a\tb", ""},
		{" http://" + here + "/", ""},
		{"http://" + here + "/ ", ""},
		{"http://" + here + "/\r\nX: 1", ""},
		{"http://" + here + "/\n", ""},
		{"http://" + here + "/\x7F", ""},
		{"http://" + here + "/\xC2\x85", ""},
		{"http://" + here + "/a" + std::string(1, '\0') + "b", ""},
		{"file:///etc/passwd", ""},
		{"ftp://" + here + "/", ""},
		{"gopher://" + here + "/", ""},
		{here, ""},
		{"//" + here + "/", ""},
		{"http:/" + here + "/", ""},
		{"http://", ""},
		{"http://" + here + "9999/", ""},
		{"http://[::1/", ""},
		{"", ""},
	};
	size_t sent = 0;
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.url);
		Exchange& exchange = make(each.url);
		EXPECT_EQ(exchange.start(), !each.target.empty());
		ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
		EXPECT_EQ(exchange.succeeded(), !each.target.empty());
		sent += !each.target.empty();
		ASSERT_EQ(server.requests().size(), sent);
		if (!each.target.empty())
		{
			EXPECT_EQ(targetOf(server.requests().back()), each.target);
		}
	}
}

TEST_F(Get, OtherVerbsGoAsGiven)
{
	RawServer server(answering(
		[](const std::string& head)
		{
			const std::string whole = answer(200, "body", "X: 1\r\n");
			return head.starts_with("HEAD") ? whole.substr(0, whole.size() - 4) : whole;
		}));
	struct Case
	{
		const char* verb;
		bool sent;
		const char* body;
	};
	for (const Case& each : {Case{"HEAD", true, ""}, Case{"DELETE", true, "body"}, Case{"purge", true, "body"},
			 Case{"GET / HTTP/1.1\r\nX: 1\r\n\r\nGET", false, ""}, Case{"", false, ""}})
	{
		SCOPED_TRACE(each.verb);
		const size_t before = server.requests().size();
		Exchange& exchange = make(server.url());
		exchange.request().SetVerb(text(each.verb));
		run(exchange);
		EXPECT_EQ(exchange.succeeded(), each.sent);
		EXPECT_EQ(exchange.body(), each.body);
		ASSERT_EQ(server.requests().size() - before, each.sent ? 1u : 0u);
		if (each.sent)
		{
			EXPECT_TRUE(server.requests().back().starts_with(utf8(text(each.verb).ToUpper()) + " / HTTP/1.1\r\n"));
			EXPECT_EQ(exchange.response()->GetContentLength(), 4u);
		}
	}
	EXPECT_EQ(server.connectionCount(), 1); // all in turn over one
}

TEST_F(Get, StaysAsItIsWhileItRunsAndMayBeSentAgainLater)
{
	Gate gate;
	RawServer server(
		[&gate](Connection& connection)
		{
			for (const int code : {200, 404})
			{
				connection.readHead();
				connection.waitFor(gate);
				connection.send(answer(code, ""));
			}
		});
	Exchange& exchange = make(server.url());
	exchange.request().CancelRequest(); // harmless: nothing runs yet
	EXPECT_TRUE(exchange.start());
	EXPECT_FALSE(exchange.start());
	exchange.request().SetURL(text("http://elsewhere.invalid/"));
	exchange.request().SetHeader("X-Late", "1");
	EXPECT_FALSE(exchange.request().SetContentAsStreamedFile("a"));
	EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Warning), 4);
	gate.open();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
	EXPECT_EQ(exchange.code(), 200);
	EXPECT_TRUE(exchange.start());
	ASSERT_TRUE(pumpUntil([&] { return exchange.completions() == 2; }));
	EXPECT_EQ(exchange.code(), 404);
	EXPECT_EQ(server.requests()[1].find("X-Late"), std::string::npos);
	stopAndCheck(2);
}

TEST_F(Get, ManyAtOnceCompleteOnceEach)
{
	constexpr int number = 500;
	std::atomic<int> arrived = 0;
	Gate all;
	RawServer server(
		[&](Connection& connection)
		{
			const std::string target = targetOf(connection.readHead());
			if (++arrived == number)
			{
				all.open();
			}
			connection.waitFor(all); // only when every request is in flight
			connection.send(answer(200, target));
		});
	std::vector<Exchange*> exchanges;
	for (int i = 0; i < number; ++i)
	{
		exchanges.push_back(
			&make(server.url("/" + std::to_string(i)), i % 2 ? Policy::CompleteOnGameThread : Policy::CompleteOnHttpThread));
		ASSERT_TRUE(exchanges.back()->start());
	}
	ASSERT_TRUE(pumpUntil(
		[&] { return std::all_of(exchanges.begin(), exchanges.end(), [](const Exchange* each) { return each->completed(); }); }, 60));
	for (int i = 0; i < number; ++i)
	{
		EXPECT_TRUE(exchanges[static_cast<size_t>(i)]->succeeded());
		EXPECT_EQ(exchanges[static_cast<size_t>(i)]->body(), "/" + std::to_string(i));
	}
}
