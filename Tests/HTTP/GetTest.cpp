#include "HttpFixture.h"

using testing::ElementsAre;

namespace
{
	class Get : public HttpTest
	{
	protected:
		Get()
		{
			server.at("*", [](const Lab::Request& request) { return request.target.starts_with("/a") ? "x" : ""; });
		}

		/**
		 * Starts a request that is either sent or fails, with one line in the log: at once, or on the HTTP thread for its URL.
		 * @return its head, empty = not sent.
		 */
		std::string headOf(Exchange& exchange, bool failsLater = false)
		{
			const uint64_t before = server.requests();
			const int errors = Log.count("LogHttp", ELogVerbosity::Error);
			const bool started = exchange.start();
			EXPECT_TRUE(pumpUntil([&] { return exchange.completed(); }));
			const bool sent = exchange.succeeded();
			EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Error) - errors, sent ? 0 : 1);
			EXPECT_EQ(started, sent || failsLater);
			EXPECT_EQ(server.requests() - before, sent ? 1u : 0u);
			return sent ? server.log().back().request->head : "";
		}

		Lab::Origin server;
	};
} // namespace

TEST_F(Get, PutsExactlyTheseBytesOnTheWire)
{
	Exchange& exchange = make(server.url("/a/b?c=d%20e&f#not-sent"));
	exchange.request().SetHeader("Range", "bytes=0-9");
	exchange.request().SetHeader("X-Empty", "");
	exchange.request().SetHeader("x!#$%&'*+-.^_`|~9", text("\ta \xE2\x82\xAC; b: c"));
	exchange.request().SetHeader("RANGE", "bytes=1-2");
	EXPECT_EQ(headOf(exchange),
		"GET /a/b?c=d%20e&f HTTP/1.1\r\n" + firstHeaders(server.authority()) +
			"User-Agent: test\r\nRANGE: bytes=1-2\r\nx!#$%&'*+-.^_`|~9: \ta \xE2\x82\xAC; b: c\r\nContent-Length: 0\r\n\r\n");
	EXPECT_EQ(exchange.response(), exchange.request().GetResponse());
	EXPECT_EQ(exchange.request().GetFailureReason(), EHttpFailureReason::None);
	EXPECT_EQ(exchange.code(), 200);
	EXPECT_EQ(exchange.body(), "x");
	EXPECT_EQ(utf8(exchange.response()->GetContentAsString()), "x");
	EXPECT_EQ(exchange.response()->GetContentLength(), 1u);
}

TEST_F(Get, ReadsTheHeadersOfTheAnswer)
{
	Lab::Origin origin;
	origin.at("/",
		Lab::raw(
			"HTTP/1.1 200 OK\r\nContent-Length: 0\r\nX-Twice: a\r\nEMPTY:\r\nx-twice:b\r\nX-Bad: \xFFz\r\nX-Blanks: \t in  side \t\r\n\r\n"));
	const FHttpResponsePtr response = get(origin.url()).response();
	EXPECT_EQ(utf8(response->GetHeader("x-TWICE")), "a, b");
	EXPECT_EQ(utf8(response->GetHeader("X-Absent")), "");
	std::vector<std::string> lines;
	for (const FString& line : response->GetAllHeaders())
	{
		lines.push_back(utf8(line));
	}
	EXPECT_THAT(lines, ElementsAre("Content-Length: 0", "X-Twice: a, b", "EMPTY: ", "X-Bad: \xEF\xBF\xBDz", "X-Blanks: in  side"));
}

TEST_F(Get, RefusesHeadersThatWouldWriteOthers)
{
	const std::string nul(1, '\0');
	const std::pair<std::string, std::string> refused[] = {{"X", "a\r\nInjected: 1"}, {"X", "a\nb"}, {"X", "a\rb"}, {"X", "a" + nul + "b"},
		{"X", "a\x1F"}, {"X", "a\x7F"}, {"X\r\nInjected", "1"}, {"X" + nul, "1"}, {"X Y", "1"}, {"X:Y", "1"}, {"X;", "1"},
		{"\xC3\xBC", "1"}, {"", "1"}, {"Content-Length", "3\r\n\r\nabc"}};
	for (const auto& [name, value] : refused)
	{
		Exchange& exchange = make(server.url());
		exchange.request().SetHeader(text(name), text(value));
		EXPECT_EQ(headOf(exchange), "") << name << "=" << value;
	}
}

TEST_F(Get, SendsOnlyCleanVerbsAndWebUrls)
{
	const std::string here = server.authority();
	const std::pair<std::string, std::string> cases[] = {// the target of the request, empty = refused
		{"HtTp://" + here + "?q", "/?q"}, {"http://" + here + "/\xC3\xBC?\xE2\x82\xAC", "/%c3%bc?%e2%82%ac"},
		{"http://" + here + "/a%0D%0Ab", "/a%0D%0Ab"}, {"http://" + here + "/a b", ""}, {" http://" + here + "/", ""},
		{"http://" + here + "/\r\nX: 1", ""}, {"http://" + here + "/\x7F", ""}, {"http://" + here + "/\xC2\x9F", ""},
		{"http://" + here + "/a" + std::string(1, '\0') + "b", ""}, {"file:///etc/passwd", ""}, {"ftp://" + here + "/", ""}, {here, ""},
		{"http:/" + here + "/", ""}, {"http://", ""}, {"http://" + here + "9999/", ""}, {"http://[::1/", ""}, {"", ""}};
	for (const auto& [url, target] : cases)
	{
		EXPECT_EQ(headOf(make(url), !url.empty()).empty() ? "" : server.log().back().request->target, target) << url;
	}
	for (const char* verb : {"GET / HTTP/1.1\r\nX: 1\r\n\r\nGET", "", "A B"})
	{
		EXPECT_EQ(headOf(make(server.url(), verb)), "") << verb;
	}
}

TEST_F(Get, StaysAsItIsWhileItRunsAndMayBeSentAgainLater)
{
	Lab::Gate gate;
	Lab::Origin origin;
	origin.at("/", Lab::inTurn({Lab::hold(gate), Lab::status({.code = 404})}));
	Exchange& exchange = make(origin.url());
	exchange.request().CancelRequest(); // harmless: nothing runs yet
	EXPECT_TRUE(exchange.start());
	EXPECT_FALSE(exchange.request().ProcessRequest());
	exchange.request().SetURL("http://elsewhere.invalid/");
	exchange.request().SetHeader("X-Late", "1");
	EXPECT_FALSE(exchange.request().SetContentAsStreamedFile("a"));
	EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Warning), 4);
	gate.open();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
	EXPECT_EQ(exchange.code(), 200);
	EXPECT_TRUE(exchange.start());
	ASSERT_TRUE(pumpUntil([&] { return exchange.record().completions == 2; }));
	EXPECT_EQ(exchange.code(), 404);
	EXPECT_EQ(origin.log()[1].request->header("X-Late"), "");
}
