#include "HttpFixture.h"
#include "Lab/Behaviours/Uploads.h"

using testing::HasSubstr;
using testing::Not;

namespace
{
	class Redirect : public HttpTest
	{
	};
} // namespace

TEST_F(Redirect, FollowsTwentyAndNoMore)
{
	Lab::Origin origin;
	origin.at("/end", "arrived");
	for (const int hops : {1, 20, 21})
	{
		SCOPED_TRACE(hops);
		const size_t before = origin.log().size();
		Exchange& exchange = get(origin.at("/", "moved", Lab::redirect({.to = "/end", .hops = hops})).url());
		const bool fits = hops <= 20;
		EXPECT_EQ(exchange.succeeded(), fits);
		EXPECT_EQ(exchange.code(), fits ? 200 : 302);
		EXPECT_EQ(exchange.body(), fits ? "arrived" : "");
		EXPECT_EQ(origin.log().size() - before, static_cast<size_t>(std::min(hops, 20) + 1));
		EXPECT_EQ(exchange.received(), exchange.body().size());
	}
	EXPECT_LE(origin.log().back().request->connection, 3u); // short bodies are read, so that the connection serves the next hop
}

TEST_F(Redirect, GoesWhereTheLocationSaysOrFails)
{
	constexpr const char* nowhere = "nowhere"; // an ordinary answer
	struct Case
	{
		int code;
		const char* location; // {} is the origin's authority
		std::string target; // of the second request, empty = refused
		const char* header = "Location";
	};
	const Case cases[] = {{302, "there", "/from/there"}, {302, "/there?a=b#c", "/there?a=b"}, {302, "?other", "/from/here?other"},
		{302, "HTTP://{}/x", "/x"}, {302, "//{}/x", "/x"}, {302, "\xC3\xBC", "/from/%c3%bc"}, {302, "file:///etc/passwd", ""},
		{302, "FILE:/etc/passwd", ""}, {302, "ftp://{}/x", ""}, {302, "http://", ""}, {302, "http://[::1", ""}, {302, "/x", nowhere, "X"},
		{302, "", nowhere}, {201, "/x", nowhere}, {404, "/x", nowhere}};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(std::to_string(each.code) + each.location);
		Lab::Origin origin;
		std::string location = each.location;
		if (const size_t at = location.find("{}"); at != location.npos)
		{
			location.replace(at, 2, origin.authority());
		}
		const Lab::Behaviour moved({"page", Lab::status({.code = each.code}), Lab::headers({{each.header, location}})});
		origin.at(
			"*", [moved](const Lab::Request& request) { return request.target == "/from/here?q" ? moved : Lab::Behaviour("arrived"); });
		const bool stays = each.target == nowhere;
		const bool refused = each.target.empty();
		Exchange& exchange = get(origin.url("/from/here?q"));
		EXPECT_EQ(exchange.succeeded(), !refused);
		EXPECT_EQ(exchange.code(), refused || stays ? each.code : 200);
		EXPECT_EQ(exchange.body(), refused ? "" : stays ? "page" : "arrived");
		ASSERT_EQ(origin.log().size(), refused || stays ? 1u : 2u);
		EXPECT_EQ(origin.log().back().request->target, refused || stays ? "/from/here?q" : each.target);
	}
}

TEST_F(Redirect, ChangesVerbAndRepeatsOrDropsTheBodyAsTheCodeDemands)
{
	struct Case
	{
		int code;
		const char* verb;
		const char* nextVerb;
		std::string nextBody; // what describes it stays, as every header does
	};
	for (const Case& each : {Case{301, "POST", "GET", ""}, {303, "PUT", "GET", ""}, {307, "POST", "POST", "abc"},
			 {301, "PUT", "PUT", "abc"}, {303, "PATCH", "PATCH", "abc"}, {301, "DELETE", "DELETE", "abc"}})
	{
		SCOPED_TRACE(std::to_string(each.code) + each.verb);
		Lab::Origin origin;
		origin.at("/", "moved", Lab::redirect({.to = "/next", .code = each.code}));
		origin.at("/next", each.nextBody.empty() ? Lab::upload({.refusesAfter = 0, .code = 200}) : "arrived"); // waits for no body
		Exchange& exchange = make(origin.url(), each.verb);
		exchange.request().SetContentAsString("abc");
		exchange.request().SetHeader("content-type", "text/plain");
		exchange.request().SetHeader("X-Kept", "1");
		EXPECT_EQ(run(exchange).body(), each.nextBody.empty() ? "0" : "arrived");
		ASSERT_EQ(origin.log().size(), 2u);
		const std::string next = origin.log()[1].request->head;
		EXPECT_THAT(next, testing::StartsWith(std::string(each.nextVerb) + " /next HTTP/1.1\r\n"));
		EXPECT_THAT(next, HasSubstr("\r\nX-Kept: 1\r\n"));
		EXPECT_THAT(next, testing::AllOf(HasSubstr("\r\ncontent-type: text/plain\r\n"), HasSubstr("\r\nContent-Length: 3\r\n")));
		EXPECT_EQ(origin.log()[1].request->body, each.nextBody);
		EXPECT_EQ(exchange.progress().back().sent, 3u);
	}
	Lab::Origin far;
	far.at("/", "moved", Lab::redirect({.to = "/end", .code = 307, .hops = 2}));
	Exchange& exchange = make(far.url(), "POST");
	exchange.request().SetContentAsString("abc");
	EXPECT_FALSE(run(exchange).succeeded());
	EXPECT_EQ(far.requests(), 2u); // a body in memory is sent again but once
}

TEST_F(Redirect, CredentialsStayWithTheirOrigin)
{
	Lab::Origin origin, other;
	other.at("/far", "arrived");
	origin.at("/", Lab::redirect({.to = origin.url("/same")})).at("/same", Lab::redirect({.to = other.url("/far")}));
	for (const bool inUrl : {false, true})
	{
		SCOPED_TRACE(inUrl);
		Exchange& exchange = make(inUrl ? "http://user:pass@" + origin.authority() + "/" : origin.url());
		if (!inUrl)
		{
			exchange.request().SetHeader("authorization", "Basic dXNlcjpwYXNz");
		}
		exchange.request().SetHeader("Cookie", "secret=1");
		exchange.request().SetHeader("Proxy-Authorization", "secret");
		exchange.request().SetHeader("Host", "shown.example");
		exchange.request().SetHeader("X-Kept", "1");
		EXPECT_EQ(run(exchange).body(), "arrived");
		ASSERT_EQ(origin.log().size(), inUrl ? 4u : 2u);
		for (const Lab::Exchange& asked : origin.log())
		{
			const std::string& head = asked.request->head;
			EXPECT_THAT(head, HasSubstr("uthorization: Basic dXNlcjpwYXNz\r\n"));
			EXPECT_THAT(head, HasSubstr("\r\nCookie: secret=1\r\nProxy-Authorization: secret\r\n"));
			EXPECT_EQ(asked.request->header("Host"), "shown.example");
		}
		const Lab::Request& far = *other.log().back().request;
		EXPECT_THAT(far.head, Not(HasSubstr("uthorization")));
		EXPECT_THAT(far.head, Not(HasSubstr("secret")));
		EXPECT_EQ(far.header("Host"), other.authority());
		EXPECT_EQ(far.header("X-Kept"), "1");
	}
}
