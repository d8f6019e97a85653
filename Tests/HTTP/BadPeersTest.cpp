#include "HttpFixture.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

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
		std::string body; // likewise
		double activityTimeoutSeconds = patienceSeconds;
	};

	/** Reads the request, sends bytes and hangs up. */
	Script sends(std::string bytes)
	{
		return [bytes](Connection& connection)
		{
			connection.readHead();
			connection.send(bytes);
		};
	}

	/** The same, but the connection stays open until the client gives it up. */
	Script sendsAndStays(std::string bytes)
	{
		return [bytes](Connection& connection)
		{
			connection.readHead();
			connection.send(bytes);
			connection.waitForPeer();
		};
	}

	Script sendsForEver(std::string first, std::string rest)
	{
		return [=](Connection& connection)
		{
			connection.readHead();
			for (connection.send(first);;)
			{
				connection.send(rest);
			}
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
		{"closes in the status line", sends("HTTP/1.1 20"), false, none, ""},
		{"closes in a header", sends(ok + "Content-Length: 5\r\nX-Ha"), false, 200, ""},
		{"closes in the body", sends(ok + "Content-Length: 5\r\n\r\nabc"), false, 200, "abc"},
		{"closes in a chunk", sends(ok + "Transfer-Encoding: chunked\r\n\r\n5\r\nabc"), false, 200, "abc"},
		{"sends chunks and a trailer", sends(ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\nX: 1\r\n\r\n"), true, 200,
			"abcde"},
		{"ends the body by closing", sends(ok + "\r\nabc"), true, 200, "abc"},
		{"sends more than it said", sendsAndStays(ok + "Content-Length: 3\r\n\r\nabcdef"), true, 200, "abc"},
		{"announces a body where none may be", sendsAndStays("HTTP/1.1 304 Same\r\nContent-Length: 7\r\n\r\n"), true, 304, ""},
		{"sends an interim answer only", sends("HTTP/1.1 103 Early\r\nLink: x\r\n\r\n"), false, 103, ""},
		{"speaks something else", sends("SSH-2.0-OpenSSH\r\n"), false, none, ""},
		{"announces two lengths", sends(ok + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nabcd"), false, 200, ""},
		{"sends endless headers", sendsForEver(ok, filler), false, 200, ""},
		{"sends endless interim answers", sendsForEver("", "HTTP/1.1 100 Continue\r\n" + filler + "\r\n"), false, 100, ""},
		{"is silent before its answer", sendsAndStays(""), false, none, "", 0.2},
		{"is silent in its headers", sendsAndStays(ok + "X: "), false, 0, "", 0.2},
		{"is silent in its body", sendsAndStays(ok + "\r\nabc"), false, 0, "abc", 0.2},
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
		restart(Settings);
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
	// The queue of this listener is full, so that the kernel leaves further connection attempts without an answer.
	const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	socklen_t size = sizeof address;
	sockaddr* const raw = reinterpret_cast<sockaddr*>(&address);
	ASSERT_TRUE(::bind(listener, raw, size) == 0 && ::listen(listener, 0) == 0 && ::getsockname(listener, raw, &size) == 0);
	const int waiting = ::socket(AF_INET, SOCK_STREAM, 0);
	ASSERT_EQ(::connect(waiting, raw, size), 0);

	Settings.connectTimeoutSeconds = 0.3;
	restart(Settings);
	const auto begin = std::chrono::steady_clock::now();
	Exchange& exchange = get("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/");
	EXPECT_FALSE(exchange.succeeded());
	EXPECT_FALSE(exchange.response().IsValid());
	EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Warning), 1);
	EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
	::close(waiting);
	::close(listener);
}
