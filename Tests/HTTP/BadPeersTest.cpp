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

	void PrintTo(const Case& each, std::ostream* out)
	{
		*out << each.name;
	}

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

	void sendsHeadersForEver(Connection& connection)
	{
		connection.readHead();
		connection.send("HTTP/1.1 200 OK\r\n");
		for (;;)
		{
			connection.send("X-Filler: " + std::string(1000, 'x') + "\r\n");
		}
	}

	void sendsInterimAnswersForEver(Connection& connection)
	{
		connection.readHead();
		for (;;)
		{
			connection.send("HTTP/1.1 100 Continue\r\nX: " + std::string(1000, 'x') + "\r\n\r\n");
		}
	}

	void staysSilentInsideBody(Connection& connection)
	{
		connection.readHead();
		connection.send("HTTP/1.1 200 OK\r\n\r\nabc");
		connection.waitForPeer();
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

	class BadPeer : public HttpTest, public testing::WithParamInterface<Case>
	{
	};
} // namespace

TEST_P(BadPeer, EndsAsItShould)
{
	const Case& each = GetParam();
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

static const std::string ok = "HTTP/1.1 200 OK\r\n";

INSTANTIATE_TEST_SUITE_P(Table, BadPeer,
	testing::Values(Case{"ClosesAtOnce", [](Connection&) {}, false, none, ""}, //
		Case{"ClosesBeforeAnswer", sends(""), false, none, ""},
		Case{"ResetsBeforeAnswer",
			[](Connection& connection)
			{
				connection.readHead();
				connection.reset();
			},
			false, none, ""},
		Case{"ClosesInStatusLine", sends("HTTP/1.1 20"), false, none, ""},
		Case{"ClosesInHeaders", sends(ok + "Content-Length: 5\r\nX-Ha"), false, 200, ""},
		Case{"ClosesAfterHeaders", sends(ok + "Content-Length: 5\r\n\r\n"), false, 200, ""},
		Case{"ClosesInBody", sends(ok + "Content-Length: 5\r\n\r\nabc"), false, 200, "abc"},
		Case{"ClosesInChunk", sends(ok + "Transfer-Encoding: chunked\r\n\r\n5\r\nabc"), false, 200, "abc"},
		Case{"ClosesBetweenChunks", sends(ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n"), false, 200, "abc"},
		Case{"BadChunkLength", sends(ok + "Transfer-Encoding: chunked\r\n\r\nzz\r\nabc"), false, 200, ""},
		Case{"ChunksWithTrailer", sends(ok + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\nX: 1\r\n\r\n"), true, 200,
			"abcde"},
		Case{"BodyUntilClose", sends(ok + "\r\nabc"), true, 200, "abc"},
		Case{"ErrorPageCutOff", sends("HTTP/1.1 404 No\r\nContent-Length: 9\r\n\r\nabc"), false, 404, "abc"},
		Case{"BodyLongerThanSaid", sendsAndStays(ok + "Content-Length: 3\r\n\r\nabcdef"), true, 200, "abc"},
		Case{"EmptyBody", sendsAndStays(ok + "Content-Length: 0\r\n\r\n"), true, 200, ""},
		Case{"NoContent", sendsAndStays("HTTP/1.1 204 None\r\n\r\n"), true, 204, ""},
		Case{"NotModified", sendsAndStays("HTTP/1.1 304 Same\r\nContent-Length: 7\r\n\r\n"), true, 304, ""},
		Case{"InterimAnswers",
			sendsAndStays("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early\r\nLink: x\r\n\r\n" + ok + "Content-Length: 2\r\n\r\nhi"), true,
			200, "hi"},
		Case{"OnlyInterimAnswer", sends("HTTP/1.1 103 Early\r\nLink: x\r\n\r\n"), false, 103, ""},
		Case{"OldServer", sends("HTTP/1.0 200 OK\r\n\r\nabc"), true, 200, "abc"},
		Case{"NoHttpAtAll", sends("SSH-2.0-OpenSSH\r\n"), false, none, ""}, //
		Case{"BadStatusCode", sends("HTTP/1.1 abc OK\r\n\r\nabc"), false, none, ""},
		Case{"TwoContentLengths", sends(ok + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nabcd"), false, 200, ""},
		Case{"ListOfContentLengths", sends(ok + "Content-Length: 3, 4\r\n\r\nabcd"), false, 200, ""},
		Case{"HugeContentLength", sends(ok + "Content-Length: 99999999999999999999\r\n\r\nabcd"), false, 200, ""},
		Case{"EndlessHeaders", sendsHeadersForEver, false, 200, ""},
		Case{"EndlessInterimAnswers", sendsInterimAnswersForEver, false, 100, ""},
		Case{"SilentBeforeAnswer", sendsAndStays(""), false, none, "", 0.2},
		Case{"SilentInHeaders", sendsAndStays(ok + "X: "), false, 0, "", 0.2},
		Case{"SilentInBody", staysSilentInsideBody, false, 0, "abc", 0.2}, //
		Case{"SlowButAlive", tricklesSlowly, true, 200, "xxxxxxxxxxx", 0.9}),
	[](const auto& row) { return std::string(row.param.name); });

namespace
{
	class NoPeer : public HttpTest
	{
	protected:
		void failsToConnect(const std::string& url)
		{
			Exchange& exchange = get(url);
			EXPECT_FALSE(exchange.succeeded());
			EXPECT_FALSE(exchange.response().IsValid());
			EXPECT_FALSE(exchange.request().GetResponse().IsValid());
			EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Warning), 1);
		}
	};
} // namespace

TEST_F(NoPeer, RefusedPort)
{
	std::string url;
	{
		RawServer gone([](Connection&) {});
		url = gone.url();
	}
	failsToConnect(url);
}

TEST_F(NoPeer, UnknownName)
{
	failsToConnect("http://nothing.invalid/");
}

TEST_F(NoPeer, ConnectTimeout)
{
	// The queue of this listener is full, so that the kernel leaves further connection attempts without an answer.
	const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
	sockaddr_in address{};
	address.sin_family = AF_INET;
	address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	socklen_t size = sizeof address;
	sockaddr* const raw = reinterpret_cast<sockaddr*>(&address);
	ASSERT_TRUE(::bind(listener, raw, size) == 0 && ::listen(listener, 0) == 0 && ::getsockname(listener, raw, &size) == 0);
	const int filler = ::socket(AF_INET, SOCK_STREAM, 0);
	ASSERT_EQ(::connect(filler, raw, size), 0);

	Settings.connectTimeoutSeconds = 0.3;
	restart(Settings);
	const auto begin = std::chrono::steady_clock::now();
	failsToConnect("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/");
	EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
	::close(filler);
	::close(listener);
}
