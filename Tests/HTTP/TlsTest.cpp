#include "HttpFixture.h"
#include "TlsIdentity.h"

TEST_F(HttpTest, TrustsOnlyKnownAuthorities)
{
	const TlsIdentity identity, stranger;
	RawServer server(answering([](const std::string&) { return answer(200, "secret"); }), &identity);
	const std::string otherName = "https://localhost:" + std::to_string(server.port()) + "/";
	for (const auto& [certificates, url, trusted] :
		{std::tuple(std::string(), server.url(), false), {stranger.certificateFile, server.url(), false},
			{identity.certificateFile, otherName, false}, {identity.certificateFile, server.url(), true}})
	{
		SCOPED_TRACE(certificates + " " + url);
		Settings.certificateFile = certificates;
		restart();
		Exchange& exchange = get(url);
		EXPECT_EQ(exchange.succeeded(), trusted);
		EXPECT_EQ(exchange.body(), trusted ? "secret" : "");
	}
	EXPECT_EQ(server.requests().size(), 1u);
}
