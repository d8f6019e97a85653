#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"
#include "TlsIdentity.h"

#include <sys/socket.h>

namespace
{
	struct BadPeer
	{
		const char* name;
		RawServer::Script script;
		int statusCode;
		std::string dataString;
	};

	/** A script that reads the request, sends these bytes and closes. */
	RawServer::Script sending(std::string bytes)
	{
		return [bytes = std::move(bytes)](Connection& connection)
		{
			connection.readHead();
			connection.send(bytes);
		};
	}

	RawServer::Script redirecting(std::string location)
	{
		return answering(
			[location = std::move(location)](const std::string&) { return answer(302, "moved", "Location: " + location + "\r\n"); });
	}

	void sendEndlessHeader(Connection& connection)
	{
		connection.readHead();
		connection.send("HTTP/1.1 200 OK\r\n");
		for (;;)
		{
			connection.send("X-Filler: " + std::string(1000, 'x') + "\r\n"); // ends when the client hangs up
		}
	}

	const BadPeer badPeers[] = {
		{"closes before reading", [](Connection&) {}, 500, "No Response"},
		{"closes before the header block", sending(""), 500, "No Response"},
		{"resets the connection",
			[](Connection& connection)
			{
				connection.readHead();
				connection.reset();
			},
			500, "No Response"},
		{"closes inside the status line", sending("HTTP/1.1 20"), 500, "No Response"},
		{"closes inside the header block", sending("HTTP/1.1 200 OK\r\nContent-Length: 5\r\nX-H"), 500, "No Response"},
		{"closes after the header block", sending("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n"), 500, "No Response"},
		{"closes inside the body", sending("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhel"), 500, "No Response"},
		{"closes inside a chunk", sending("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhel"), 500, "No Response"},
		{"sends no HTTP", sending("SSH-2.0-nonsense\r\n"), 500, "No Response"},
		{"sends an endless header", sendEndlessHeader, 500, "No Response"},
		{"sends 103 first", sending("HTTP/1.1 103 Early Hints\r\nX-A: 1\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"), 200, "ok"},
		{"sends 204", sending("HTTP/1.1 204 No Content\r\n\r\n"), 204, ""},
		{"sends 304 with a length", sending("HTTP/1.1 304 Not Modified\r\nContent-Length: 5\r\n\r\n"), 304, ""},
		{"sends an empty body", sending("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"), 200, ""},
		{"redirects for ever", redirecting("/again"), 500, "No Response"},
		{"redirects to a file", redirecting("file:///etc/hostname"), 500, "No Response"},
		{"redirects to nowhere", redirecting("http://"), 500, "No Response"},
	};

	class BadPeers : public ModuleFixture
	{
	protected:
		BadPeers()
			: ModuleFixture(settings())
		{
		}

		static FGameLoopSettings settings()
		{
			FGameLoopSettings settings;
			settings.http.activityTimeoutSeconds = 0.3;
			settings.http.connectTimeoutSeconds = 5;
			return settings;
		}

		/** A request by each of the three general builders. */
		TArray<FhttpRequest> build(std::string_view verb, const std::string& url)
		{
			TArray<FhttpRequest> requests;
			FString id;
			if (verb == "GET")
			{
				return get(url);
			}
			if (verb == "POST")
			{
				UCorvaneBPLibrary::CreateHttpRequestPOST({}, text(url), {}, {{"field", "value"}}, "", false, requests, id);
				return requests;
			}
			UCorvaneBPLibrary::CreateHttpRequestIndividual({}, text(url), {{"Content-Type", "text/plain"}}, text(verb),
				EHTTPCorvIndividualType::STRING, "body", "", requests, id, false, true, false, false);
			return requests;
		}

		void expectNoResponse(const std::string& url, const Headers& header = {})
		{
			const Completion result = run(get(url, header, "id"));
			EXPECT_EQ(result.statusCode, 500) << url;
			EXPECT_EQ(result.dataString, "No Response") << url;
			EXPECT_EQ(result.dataArray, std::vector<std::string>{"No Response"}) << url;
			EXPECT_TRUE(result.header.empty()) << url;
			EXPECT_EQ(result.byteData, "") << url;
			EXPECT_EQ(result.requestID, "id") << url;
		}
	};

} // namespace

TEST_F(BadPeers, GiveOneClearResult)
{
	LogCapture log;
	for (const BadPeer& peer : badPeers)
	{
		for (const char* verb : {"GET", "POST", "PUT"})
		{
			RawServer server(peer.script);
			const Completion result = run(build(verb, server.url()));
			EXPECT_EQ(result.statusCode, peer.statusCode) << verb << " from one that " << peer.name;
			EXPECT_EQ(result.dataString, peer.dataString) << verb << " from one that " << peer.name;
		}
	}
}

TEST_F(BadPeers, AServerErrorThatBreaksOffKeepsItsCode)
{
	RawServer server(sending("HTTP/1.1 503 Busy\r\nContent-Length: 50\r\n\r\nbusy"));
	const Completion result = run(get(server.url()));
	EXPECT_EQ(result.statusCode, 503);
	EXPECT_EQ(result.dataString, "busy");
}

TEST_F(BadPeers, ASilentServerRunsIntoTheTimeLimit)
{
	Gate never;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.waitFor(never);
		});
	expectNoResponse(server.url());
}

TEST_F(BadPeers, UnusableAddressesFailLikeRequests)
{
	LogCapture log;
	int closedPort = 0;
	{
		closedPort = RawServer([](Connection&) {}).port();
	}
	const std::string nul("http://127.0.0.1/\0x", 19);
	const std::string addresses[] = {"http://127.0.0.1:" + std::to_string(closedPort) + "/", "http://nothing.invalid/", "abc", "http://",
		"http://[::1", "http://host:99999/", "ftp://127.0.0.1/", "file:///etc/hostname", "http://127.0.0.1/a b",
		"http://127.0.0.1/\r\nX-Injected: 1", nul};
	for (const std::string& address : addresses)
	{
		expectNoResponse(address);
	}
}

TEST_F(BadPeers, HeadersThatBreakOutOfTheirLineAreNeverSent)
{
	LogCapture log;
	RawServer server(answering([](const std::string&) { return answer(200, "reached"); }));
	const std::string nul("a\0b", 3);
	const std::pair<std::string, std::string> headers[] = {{"X-Test", "a\r\nX-Injected: 1"}, {"X-Test", "a\nb"}, {"X-Test", "a\rb"},
		{"X-Test", nul}, {"X\r\nY", "a"}, {"X\nY", "a"}, {nul, "a"}};
	for (const auto& [name, value] : headers)
	{
		expectNoResponse(server.url(), {{text(name), text(value)}});
	}
	EXPECT_EQ(log.count("LogHttp", ELogVerbosity::Error), static_cast<int>(std::size(headers)));
	EXPECT_EQ(server.connectionCount(), 0);
}

TEST_F(BadPeers, ACertificateOfAnUnknownAuthorityIsRefused)
{
	const TlsIdentity identity;
	RawServer server(answering([](const std::string&) { return answer(200, "secret"); }), &identity);
	expectNoResponse(server.url());
	EXPECT_TRUE(server.requests().empty());
}
