#include "HttpFixture.h"

namespace
{
	using Script = RawServer::Script;

	constexpr int none = -1;

	struct Case
	{
		const char* name;
		Script script;
		bool succeeds;
		int code; // none = no header line came
		std::string body;
		double activityTimeoutSeconds = patienceSeconds;
	};

	/** Reads the request, sends bytes, and hangs up, or waits until the client does, which may get more and more meanwhile. */
	Script sends(std::string bytes, bool stays = false, std::string forEver = "")
	{
		return [=](Connection& connection)
		{
			connection.readHead();
			for (connection.send(bytes); !forEver.empty();)
			{
				connection.send(forEver);
			}
			stays ? connection.waitForPeer() : void();
		};
	}

	void tricklesSlowly(Connection& connection)
	{
		connection.readHead();
		connection.send("HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n");
		for (int i = 0; i < 11; ++i)
		{
			std::this_thread::sleep_for(std::chrono::milliseconds(100)); // what the test measures: silence below the limit
			connection.send("x");
		}
	}

	const std::string ok = "HTTP/1.1 200 OK\r\n";
	const std::string filler = "X-Filler: " + std::string(1000, 'x') + "\r\n";

	const Case cases[] = {
		{"closes at once", [](Connection&) {}, false, none, ""},
		{"closes in a header", sends(ok + "Content-Length: 5\r\nX-Ha"), false, 200, ""},
		{"closes in the body", sends(ok + "Content-Length: 5\r\n\r\nabc"), false, 200, "abc"},
		{"sends chunks and a trailer", sends(ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\nX: 1\r\n\r\n"), true, 200,
			"abcde"},
		{"ends the body by closing", sends(ok + "\r\nabc"), true, 200, "abc"},
		{"sends more than it said", sends(ok + "Content-Length: 3\r\n\r\nabcdef", true), true, 200, "abc"},
		{"sends an interim answer only", sends("HTTP/1.1 103 Early\r\nLink: x\r\n\r\n"), false, 103, ""},
		{"announces two lengths", sends(ok + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nabcd"), false, 200, ""},
		{"sends endless headers", sends(ok, true, filler), false, 200, ""},
		{"sends endless interim answers", sends("", true, "HTTP/1.1 100 Continue\r\n" + filler + "\r\n"), false, 100, ""},
		{"is silent before its answer", sends("", true), false, none, "", 0.2},
		{"is silent in its body", sends(ok + "\r\nabc", true), false, 0, "abc", 0.2},
		{"is slow but alive", tricklesSlowly, true, 200, "xxxxxxxxxxx", 0.9},
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
		RawServer server(each.script);
		Exchange& exchange = get(server.url());
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
