#include "HttpFixture.h"
#include "TempDir.h"

TEST_F(HttpTest, TrustsOnlyKnownAuthorities)
{
	Lab::Origin server({.usesTls = true}), other({.address = "127.0.0.2", .usesTls = true});
	server.at("/", "secret");
	const TempDir dir;
	const std::string known = dir.write("known", server.certificate()), stranger = dir.write("stranger", other.certificate());
	const std::string otherName = "https://127.0.0.2:" + std::to_string(other.port()) + "/"; // which its certificate does not say
	for (const auto& [certificates, url, trusted] : {std::tuple(std::string(), server.url(), false), {stranger, server.url(), false},
			 {stranger, otherName, false}, {known, server.url(), true}})
	{
		SCOPED_TRACE(certificates + " " + url);
		Settings.certificateFile = certificates;
		restart();
		Exchange& exchange = get(url);
		EXPECT_EQ(exchange.succeeded(), trusted);
		EXPECT_EQ(exchange.body(), trusted ? "secret" : "");
	}
	EXPECT_EQ(server.requests(), 1u);
	EXPECT_EQ(other.requests(), 0u);
	EXPECT_EQ(other.connections(), 1u);
}
