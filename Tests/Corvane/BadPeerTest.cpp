#include "Calls.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "ServerKit.h"

namespace
{
	constexpr const char* failure = "500 No Response";

	struct BadPeer
	{
		const char* name;
		RawServer::Script script;
		const char* result;
	};

	const BadPeer badPeers[] = {
		{"closes at once", [](Connection&) {}, failure},
		{"closes inside the body", saying("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhel"), failure},
		{"breaks off its error", saying("HTTP/1.1 503 Busy\r\nContent-Length: 50\r\n\r\nbusy"), "503 busy"},
		{"sends 103 first", saying("HTTP/1.1 103 Early\r\nX-A: 1\r\n\r\n" + answer(200, "ok")), "200 ok"},
		{"sends no body", saying("HTTP/1.1 204 No Content\r\n\r\n"), "204 "},
		{"redirects to a file", saying(answer(302, "moved", "Location: file:///etc/hostname\r\n")), failure},
		{"is silent", [](Connection& connection) { connection.waitForPeer(); }, failure},
	};

	class BadPeers : public ModuleFixture
	{
	protected:
		BadPeers()
			: ModuleFixture(impatient(0.3))
		{
		}

		LogCapture log;
	};
} // namespace

TEST_F(BadPeers, GiveOneClearResult)
{
	for (const BadPeer& peer : badPeers)
	{
		for (const char* builder : {"CreateHttpRequestGET", "CreateHttpRequestPOST", "CreateHttpRequestIndividual"})
		{
			const RawServer server(peer.script);
			const Pins pins{.url = text(server.url()), .header = {{"Content-Type", "text/plain"}}, .content = "body"};
			EXPECT_EQ(run(build(builder, pins)).brief(), peer.result) << builder << ": one that " << peer.name;
		}
	}
}

TEST_F(BadPeers, AddressesAndHeadersThatCannotBeSentFailLikeRequests)
{
	const int closedPort = RawServer([](Connection&) {}).port();
	RawServer server(answering([](const std::string&) { return answer(200, "reached"); }));
	const std::string fine = server.url();
	const std::pair<std::string, const char*> unusable[] = {{"http://127.0.0.1:" + std::to_string(closedPort) + "/", "a"},
		{"http://nothing.invalid/", "a"}, {"abc", "a"}, {fine + "\r\nX-Injected: 1", "a"}, {fine + '\0', "a"},
		{fine, "a\r\nX-Injected: 1"}};
	for (const auto& [address, value] : unusable)
	{
		const Completion result = run(get(address, {{"X-Test", value}}, "id"));
		EXPECT_EQ(result.requestID + result.brief() + result.byteData, std::string("id") + failure) << address;
		EXPECT_EQ(result.dataArray, std::vector<std::string>{"No Response"});
		EXPECT_TRUE(result.header.empty());
	}
	EXPECT_EQ(server.connectionCount(), 0);
}
