#include "HttpFixture.h"

using testing::ElementsAre;

namespace
{
	class Get : public HttpTest
	{
	protected:
		/** Starts a request that is either refused, with one line in the log, or sent; @return its head, empty = refused. */
		std::string headOf(Exchange& exchange)
		{
			const size_t before = server.requests().size();
			const int errors = Log.count("LogHttp", ELogVerbosity::Error);
			const bool sent = exchange.start();
			EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Error) - errors, sent ? 0 : 1);
			EXPECT_TRUE(pumpUntil([&] { return exchange.completed(); }));
			EXPECT_EQ(exchange.succeeded(), sent);
			EXPECT_EQ(server.requests().size() - before, sent ? 1u : 0u);
			return sent ? server.requests().back() : "";
		}

		RawServer server{answering(
			[](const std::string& head)
			{
				const std::string whole = answer(200, "x");
				return head.starts_with("HEAD") ? whole.substr(0, whole.size() - 1) : whole;
			})};
	};
} // namespace

TEST_F(Get, PutsExactlyTheseBytesOnTheWire)
{
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
	EXPECT_EQ(exchange.body(), "x");
	EXPECT_EQ(utf8(exchange.response()->GetContentAsString()), "x");
	EXPECT_EQ(exchange.response()->GetContentLength(), 1u);
}

TEST_F(Get, ReadsTheHeadersOfTheAnswer)
{
	RawServer origin(answering([](const std::string&)
		{ return answer(200, "", "X-Twice: a\r\nEMPTY:\r\nx-twice:b\r\nX-Bad: \xFFz\r\nX-Blanks: \t in  side \t\r\n"); }));
	Exchange& exchange = get(origin.url());
	EXPECT_EQ(exchange.header("x-TWICE"), "a, b");
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
	Exchange& exchange = make(server.url());
	exchange.request().SetHeader("x!#$%&'*+-.^_`|~9", text("\ta \xE2\x82\xAC; b: c"));
	EXPECT_EQ(headOf(exchange), "GET / HTTP/1.1\r\n" + firstHeaders(server.authority()) +
									"User-Agent: test\r\nx!#$%&'*+-.^_`|~9: \ta \xE2\x82\xAC; b: c\r\nContent-Length: 0\r\n\r\n");
}

TEST_F(Get, SendsOnlyCleanWebUrls)
{
	const std::string here = server.authority();
	const std::pair<std::string, std::string> cases[] = {
		// the target of the request, empty = refused
		{"HtTp://" + here + "?q", "/?q"},
		{"http://" + here + "/\xC3\xBC?\xE2\x82\xAC", "/%c3%bc?%e2%82%ac"},
		{"http://" + here + "/a%0D%0Ab", "/a%0D%0Ab"},
		{"http://" + here + "/a b", ""},
		{" http://" + here + "/", ""},
		{"http://" + here + "/\r\nX: 1", ""},
		{"http://" + here + "/\x7F", ""},
		{"http://" + here + "/\xC2\x9F", ""},
		{"http://" + here + "/a" + std::string(1, '\0') + "b", ""},
		{"file:///etc/passwd", ""},
		{"ftp://" + here + "/", ""},
		{here, ""},
		{"http:/" + here + "/", ""},
		{"http://", ""},
		{"http://" + here + "9999/", ""},
		{"http://[::1/", ""},
		{"", ""},
	};
	for (const auto& [url, target] : cases)
	{
		const std::string head = headOf(make(url));
		EXPECT_EQ(head.empty() ? "" : targetOf(head), target) << url;
	}
}

TEST_F(Get, OtherVerbsGoAsGivenAndAllOverOneConnection)
{
	for (const char* verb : {"HEAD", "DELETE", "purge", "GET / HTTP/1.1\r\nX: 1\r\n\r\nGET", ""})
	{
		const std::string head = headOf(make(server.url(), verb));
		const bool sent = *verb && !std::string_view(verb).starts_with("GET");
		EXPECT_EQ(head.substr(0, head.find('/')), sent ? utf8(FString(verb).ToUpper()) + " " : "") << verb;
	}
	EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(Get, StaysAsItIsWhileItRunsAndMayBeSentAgainLater)
{
	Gate gate;
	RawServer origin(
		[&gate](Connection& connection)
		{
			for (const int code : {200, 404})
			{
				connection.readHead();
				connection.waitFor(gate);
				connection.send(answer(code, ""));
			}
		});
	Exchange& exchange = make(origin.url());
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
	ASSERT_TRUE(pumpUntil([&] { return exchange.record().completions == 2; }));
	EXPECT_EQ(exchange.code(), 404);
	EXPECT_EQ(origin.requests()[1].find("X-Late"), std::string::npos);
	stopAndCheck(2);
}
