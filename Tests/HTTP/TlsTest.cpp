#include "HttpFixture.h"
#include "TlsIdentity.h"

namespace
{
	class Tls : public HttpTest
	{
	};
} // namespace

TEST_F(Tls, TrustsOnlyKnownAuthorities)
{
	const TlsIdentity identity, stranger;
	RawServer server(answering([](const std::string&) { return answer(200, "secret"); }), &identity);
	struct Case
	{
		std::string certificates, url;
		bool trusted;
	};
	const std::string otherName = "https://localhost:" + std::to_string(server.port()) + "/";
	for (const Case& each : {Case{"", server.url(), false}, Case{stranger.certificateFile, server.url(), false},
			 Case{identity.certificateFile, otherName, false}, Case{identity.certificateFile, server.url(), true}})
	{
		SCOPED_TRACE(each.certificates + " " + each.url);
		Settings.certificateFile = each.certificates;
		restart(Settings);
		Exchange& exchange = get(each.url);
		EXPECT_EQ(exchange.succeeded(), each.trusted);
		EXPECT_EQ(exchange.body(), each.trusted ? "secret" : "");
	}
	EXPECT_EQ(server.requests().size(), 1u);
}
