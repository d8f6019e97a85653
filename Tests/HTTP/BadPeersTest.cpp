#include "HttpFixture.h"
#include "LoopbackListener.h"

namespace
{
	constexpr int none = -1;

	struct Case
	{
		const char* name;
		Lab::Behaviour serve;
		bool succeeds;
		int code; // none = no header line came
		std::string body;
		double activityTimeoutSeconds = patienceSeconds;
	};

	constexpr Lab::RawEnd stays = Lab::RawEnd::Stall;
	const std::string ok = "HTTP/1.1 200 OK\r\n";
	const std::string interim = "HTTP/1.1 100 Continue\r\nX-Filler: " + std::string(1000, 'x') + "\r\n\r\n";

	const Case cases[] = {
		{"closes at once", Lab::drop(), false, none, ""},
		{"closes in a header", Lab::raw(ok + "Content-Length: 5\r\nX-Ha"), false, 200, ""},
		{"closes in the body", {{"abcde", Lab::dropAfter(3)}}, false, 200, "abc"},
		{"sends chunks and a trailer", Lab::raw(ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\nX: 1\r\n\r\n"), true,
			200, "abcde"},
		{"ends the body by closing", Lab::raw(ok + "\r\nabc"), true, 200, "abc"},
		{"sends more than it said", Lab::raw(ok + "Content-Length: 3\r\n\r\nabcdef", stays), true, 200, "abc"},
		{"sends an interim answer only", Lab::raw("HTTP/1.1 103 Early\r\nLink: x\r\n\r\n"), false, 103, ""},
		{"announces two lengths", Lab::raw(ok + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nabcd"), false, 200, ""},
		{"sends endless headers", Lab::endlessHeaders(), false, 200, ""},
		{"sends endless interim answers", Lab::raw(wholeOf(*Lab::repeatedContent(interim, 64 << 20)), stays), false, 100, ""},
		{"is silent before its answer", Lab::stall(), false, none, "", 0.2},
		{"is silent in its body", Lab::raw(ok + "\r\nabc", stays), false, 0, "abc", 0.2},
		{"is slow but alive", {{"xxxxxxxxxxx", Lab::pieces({1}, Lab::Milliseconds(100))}}, true, 200, "xxxxxxxxxxx", 0.9},
	};

	class BadPeer : public HttpTest
	{
	};
} // namespace

TEST_F(BadPeer, EndsAsItShould)
{
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.name);
		Settings.activityTimeoutSeconds = each.activityTimeoutSeconds;
		restart();
		Lab::Origin origin;
		Exchange& exchange = get(origin.at("/", each.serve).url());
		EXPECT_EQ(exchange.succeeded(), each.succeeds);
		EXPECT_EQ(exchange.response().IsValid(), each.code >= 0);
		EXPECT_EQ(exchange.code(), std::max(each.code, 0));
		EXPECT_EQ(exchange.body(), each.body);
		EXPECT_EQ(exchange.received(), each.body.size());
		EXPECT_EQ(exchange.request().GetResponse().IsValid(), each.succeeds);
	}
}

TEST_F(BadPeer, ThatAcceptsNobodyEndsAtTheLimitForConnecting)
{
	Settings.connectTimeoutSeconds = 0.3;
	restart();
	const LoopbackListener full(0); // one fills its queue, and the kernel leaves the other attempt without an answer
	Exchange* const both[] = {&make("http://" + full.authority() + "/"), &make("http://" + full.authority() + "/")};
	both[0]->start();
	both[1]->start();
	ASSERT_TRUE(waitFor([&] { return both[0]->completed() || both[1]->completed(); }));
	const Exchange& ended = *both[both[1]->completed()];
	EXPECT_FALSE(ended.succeeded());
	EXPECT_FALSE(ended.response().IsValid());
	EXPECT_EQ(ended.request().GetFailureReason(), EHttpFailureReason::ConnectionError);
	EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Warning), 1);
}
