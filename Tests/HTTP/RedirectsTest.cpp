#include "HttpFixture.h"

using testing::HasSubstr;
using testing::Not;

namespace
{
	class Redirect : public HttpTest
	{
	};

	std::string redirectTo(std::string_view location, int code = 302)
	{
		return answer(code, "moved", "Location: " + std::string(location) + "\r\n");
	}

	/** Answers "/N" with a redirect to "/N-1" and "/0" with the end of the road. */
	std::string countDown(const std::string& head)
	{
		const int left = std::stoi(targetOf(head).substr(1));
		return left == 0 ? answer(200, "arrived") : redirectTo(std::to_string(left - 1));
	}
} // namespace

TEST_F(Redirect, FollowsTwentyAndNoMore)
{
	RawServer server(answering(countDown));
	for (const int hops : {1, 20, 21})
	{
		SCOPED_TRACE(hops);
		const size_t before = server.requests().size();
		Exchange& exchange = get(server.url("/" + std::to_string(hops)));
		const bool fits = hops <= 20;
		EXPECT_EQ(exchange.succeeded(), fits);
		EXPECT_EQ(exchange.code(), fits ? 200 : 302);
		EXPECT_EQ(exchange.body(), fits ? "arrived" : "");
		EXPECT_EQ(server.requests().size() - before, static_cast<size_t>(std::min(hops, 20) + 1));
		EXPECT_EQ(exchange.received(), exchange.body().size());
	}
	EXPECT_LE(server.connectionCount(), 3); // short bodies are read, so that the connection serves the next hop
}

TEST_F(Redirect, GoesWhereTheLocationSaysOrFails)
{
	constexpr const char* nowhere = "nowhere"; // an ordinary answer
	struct Case
	{
		int code;
		const char* header; // {} is the server's authority
		std::string target; // of the second request, empty = refused
	};
	const Case cases[] = {{302, "Location: there", "/from/there"}, {302, "Location: /there?a=b#c", "/there?a=b"},
		{302, "Location: ?other", "/from/here?other"}, {302, "Location: HTTP://{}/x", "/x"}, {302, "Location: //{}/x", "/x"},
		{302, "Location: \xC3\xBC", "/from/%c3%bc"}, {302, "Location: file:///etc/passwd", ""}, {302, "Location: FILE:/etc/passwd", ""},
		{302, "Location: ftp://{}/x", ""}, {302, "Location: http://", ""}, {302, "Location: http://[::1", ""}, {302, "X: /x", nowhere},
		{302, "Location:", nowhere}, {201, "Location: /x", nowhere}, {404, "Location: /x", nowhere}};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(std::to_string(each.code) + each.header);
		std::string header = std::string(each.header) + "\r\n";
		RawServer server(answering([&](const std::string& head)
			{ return targetOf(head) == "/from/here?q" ? answer(each.code, "page", header) : answer(200, "arrived"); }));
		if (const size_t at = header.find("{}"); at != header.npos)
		{
			header.replace(at, 2, server.authority());
		}
		const bool stays = each.target == nowhere;
		const bool refused = each.target.empty();
		Exchange& exchange = get(server.url("/from/here?q"));
		EXPECT_EQ(exchange.succeeded(), !refused);
		EXPECT_EQ(exchange.code(), refused || stays ? each.code : 200);
		EXPECT_EQ(exchange.body(), refused ? "" : stays ? "page" : "arrived");
		ASSERT_EQ(server.requests().size(), refused || stays ? 1u : 2u);
		EXPECT_EQ(targetOf(server.requests().back()), refused || stays ? "/from/here?q" : each.target);
	}
}

TEST_F(Redirect, ChangesVerbAndRepeatsOrDropsTheBodyAsTheCodeDemands)
{
	struct Case
	{
		int code;
		const char* verb;
		const char* nextVerb;
		std::string nextBody; // dropped together with what describes it
	};
	for (const Case& each : {Case{301, "POST", "GET", ""}, {303, "PUT", "GET", ""}, {307, "POST", "POST", "abc"},
			 {301, "PUT", "PUT", "abc"}, {303, "PATCH", "PATCH", "abc"}, {301, "DELETE", "DELETE", "abc"}})
	{
		SCOPED_TRACE(std::to_string(each.code) + each.verb);
		RawServer server(answering(
			[&](const std::string& head) { return targetOf(head) == "/" ? redirectTo("/next", each.code) : answer(200, "arrived"); }));
		Exchange& exchange = make(server.url(), each.verb);
		exchange.request().SetContentAsString("abc");
		exchange.request().SetHeader("content-type", "text/plain");
		exchange.request().SetHeader("X-Kept", "1");
		EXPECT_EQ(run(exchange).body(), "arrived");
		ASSERT_EQ(server.requests().size(), 2u);
		const std::string next = server.requests()[1];
		EXPECT_THAT(next, testing::StartsWith(std::string(each.nextVerb) + " /next HTTP/1.1\r\n"));
		EXPECT_THAT(next, HasSubstr("\r\nX-Kept: 1\r\n"));
		EXPECT_EQ(next.find("ontent-") == std::string::npos, each.nextBody.empty());
		EXPECT_EQ(server.bodies()[1], each.nextBody);
		EXPECT_EQ(exchange.progress().back().sent, 3u);
	}
}

TEST_F(Redirect, CredentialsStayWithTheirOrigin)
{
	RawServer other(answering([](const std::string&) { return answer(200, "arrived"); }));
	RawServer server(
		answering([&](const std::string& head) { return redirectTo(targetOf(head) == "/" ? server.url("/same") : other.url("/far")); }));
	for (const bool inUrl : {false, true})
	{
		SCOPED_TRACE(inUrl);
		Exchange& exchange = make(inUrl ? "http://user:pass@" + server.authority() + "/" : server.url());
		if (!inUrl)
		{
			exchange.request().SetHeader("authorization", "Basic dXNlcjpwYXNz");
		}
		exchange.request().SetHeader("Cookie", "secret=1");
		exchange.request().SetHeader("Proxy-Authorization", "secret");
		exchange.request().SetHeader("Host", "shown.example");
		exchange.request().SetHeader("X-Kept", "1");
		EXPECT_EQ(run(exchange).body(), "arrived");
		ASSERT_EQ(server.requests().size(), inUrl ? 4u : 2u);
		for (const std::string& head : server.requests())
		{
			EXPECT_THAT(head, HasSubstr("uthorization: Basic dXNlcjpwYXNz\r\n"));
			EXPECT_THAT(head, HasSubstr("\r\nCookie: secret=1\r\nProxy-Authorization: secret\r\n"));
			EXPECT_EQ(headerOf(head, "Host"), "shown.example");
		}
		const std::string far = other.requests().back();
		EXPECT_THAT(far, Not(HasSubstr("uthorization")));
		EXPECT_THAT(far, Not(HasSubstr("secret")));
		EXPECT_EQ(headerOf(far, "Host"), other.authority());
		EXPECT_EQ(headerOf(far, "X-Kept"), "1");
	}
}
