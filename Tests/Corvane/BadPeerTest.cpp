#include "Calls.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

namespace
{
	constexpr const char* failure = "500 No Response";

	struct BadPeer
	{
		const char* name;
		Lab::Behaviour serve;
		const char* result;
	};

	const BadPeer badPeers[] = {
		{"closes at once", Lab::drop(), failure},
		{"closes inside the body", {{"hello", Lab::dropAfter(3)}}, failure},
		{"breaks off its error", {{Lab::status({.code = 503, .text = "busy"}), Lab::length({.says = 50})}}, "503 busy"},
		{"sends 103 first", Lab::raw("HTTP/1.1 103 Early\r\nX-A: 1\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"), "200 ok"},
		{"sends no body", Lab::status({.code = 204}), "204 "},
		{"redirects to a file", {{"moved", Lab::redirect({.to = "file:///etc/hostname"})}}, failure},
		{"is silent", Lab::stall(), failure},
	};

	class BadPeers : public ModuleFixture
	{
	protected:
		BadPeers()
			: ModuleFixture(impatient(1))
		{
		}

		Lab::Origin origin;
		LogCapture log;
	};
} // namespace

TEST_F(BadPeers, GiveOneClearResult)
{
	for (const BadPeer& peer : badPeers)
	{
		for (const char* builder : {"CreateHttpRequestGET", "CreateHttpRequestPOST", "CreateHttpRequestIndividual"})
		{
			const Pins pins{.url = text(origin.at("/", peer.serve).url()), .header = {{"Content-Type", "text/plain"}}, .content = "body"};
			EXPECT_EQ(run(build(builder, pins)).brief(), peer.result) << builder << ": one that " << peer.name;
		}
	}
}

TEST_F(BadPeers, AddressesAndHeadersThatCannotBeSentFailLikeRequests)
{
	const std::string closed = Lab::Origin().url(), fine = origin.at("*", "reached").url();
	const std::pair<std::string, const char*> unusable[] = {{closed, "a"}, {"http://nothing.invalid/", "a"}, {"abc", "a"},
		{fine + "\r\nX-Injected: 1", "a"}, {fine + '\0', "a"}, {fine, "a\r\nX-Injected: 1"}};
	for (const auto& [address, value] : unusable)
	{
		const Completion result = run(get(address, {{"X-Test", value}}, "id"));
		EXPECT_EQ(result.requestID + result.brief() + result.byteData, std::string("id") + failure) << address;
		EXPECT_EQ(result.dataArray, std::vector<std::string>{"No Response"});
		EXPECT_TRUE(result.header.empty());
	}
	EXPECT_TRUE(origin.log().empty());
}
