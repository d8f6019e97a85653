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
	const std::pair<const char*, const char*> cases[] = {
		// the target of the second request, empty = refused
		{"there", "/from/there"},
		{"/there?a=b#c", "/there?a=b"},
		{"../up", "/up"},
		{"?other", "/from/here?other"},
		{"HTTP://{}/x", "/x"},
		{"//{}/x", "/x"},
		{"  \t/there\t ", "/there"},
		{"\xC3\xBC", "/from/%c3%bc"},
		{"file:///etc/passwd", ""},
		{"FILE:/etc/passwd", ""},
		{"ftp://{}/x", ""},
		{"http://", ""},
		{"http://[::1", ""},
	};
	for (std::string location; const auto& [given, target] : cases)
	{
		SCOPED_TRACE(given);
		RawServer server(answering(
			[&](const std::string& head) { return targetOf(head) == "/from/here?q" ? redirectTo(location) : answer(200, "arrived"); }));
		location = given;
		if (const size_t at = location.find("{}"); at != location.npos)
		{
			location.replace(at, 2, server.authority());
		}
		const bool refused = *target == '\0';
		Exchange& exchange = get(server.url("/from/here?q"));
		EXPECT_EQ(exchange.succeeded(), !refused);
		EXPECT_EQ(exchange.code(), refused ? 302 : 200);
		EXPECT_EQ(exchange.body(), refused ? "" : "arrived");
		ASSERT_EQ(server.requests().size(), refused ? 1u : 2u);
		EXPECT_EQ(refused ? "" : targetOf(server.requests()[1]), target);
	}
}

TEST_F(Redirect, OrdinaryAnswersStayWhatTheyAre)
{
	for (const auto& [code, headers] : {std::pair(302, ""), {302, "Location:\r\n"}, {201, "Location: /x\r\n"}, {404, "Location: /x\r\n"}})
	{
		SCOPED_TRACE(std::to_string(code) + headers);
		RawServer server(answering([&](const std::string&) { return answer(code, "page", headers); }));
		Exchange& exchange = get(server.url());
		EXPECT_TRUE(exchange.succeeded());
		EXPECT_EQ(exchange.code(), code);
		EXPECT_EQ(exchange.body(), "page");
		EXPECT_EQ(server.requests().size(), 1u);
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
	const Case cases[] = {{301, "POST", "GET", ""}, {302, "POST", "GET", ""}, {303, "POST", "GET", ""}, {303, "PUT", "GET", ""},
		{307, "POST", "POST", "abc"}, {308, "PUT", "PUT", "abc"}, {301, "PUT", "PUT", "abc"}, {303, "PATCH", "PATCH", "abc"},
		{301, "DELETE", "DELETE", "abc"}, {303, "DELETE", "DELETE", "abc"}};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(std::to_string(each.code) + each.verb);
		std::string body;
		RawServer server(
			[&](Connection& connection)
			{
				connection.readHead();
				connection.read(3);
				connection.send(redirectTo("/next", each.code));
				connection.readHead();
				body = connection.read(each.nextBody.size());
				connection.send(answer(200, "arrived"));
			});
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
		EXPECT_EQ(body, each.nextBody);
	}
}

TEST_F(Redirect, CredentialsStayWithTheirOrigin)
{
	RawServer other(answering([](const std::string&) { return answer(200, "arrived"); }));
	RawServer server(answering(
		[&](const std::string& head)
		{
			const std::string target = targetOf(head);
			return target == "/same"   ? redirectTo("/away")
				   : target == "/away" ? redirectTo(other.url("/far"))
									   : redirectTo(server.url("/same"));
		}));
	for (const bool inUrl : {false, true})
	{
		SCOPED_TRACE(inUrl);
		const std::string url = inUrl ? "http://user:pass@" + server.authority() + "/" : server.url();
		Exchange& exchange = make(url);
		if (!inUrl)
		{
			exchange.request().SetHeader(text("authorization"), text("Basic dXNlcjpwYXNz"));
		}
		exchange.request().SetHeader(text("Cookie"), text("secret=1"));
		exchange.request().SetHeader(text("Proxy-Authorization"), text("secret"));
		exchange.request().SetHeader(text("Host"), text("shown.example"));
		exchange.request().SetHeader(text("X-Kept"), text("1"));
		run(exchange);
		EXPECT_EQ(exchange.body(), "arrived");
		const std::vector<std::string> near = server.requests();
		ASSERT_EQ(near.size(), inUrl ? 6u : 3u);
		for (const std::string& head : near)
		{
			EXPECT_THAT(head, HasSubstr("uthorization: Basic dXNlcjpwYXNz\r\n"));
			EXPECT_THAT(head, HasSubstr("\r\nCookie: secret=1\r\nProxy-Authorization: secret\r\n"));
			EXPECT_THAT(head, HasSubstr("\r\nHost: shown.example\r\n"));
		}
		const std::string far = other.requests().back();
		EXPECT_THAT(far, Not(HasSubstr("uthorization")));
		EXPECT_THAT(far, Not(HasSubstr("secret")));
		EXPECT_THAT(far, HasSubstr("\r\nHost: " + other.authority() + "\r\n"));
		EXPECT_THAT(far, HasSubstr("\r\nX-Kept: 1\r\n"));
	}
}

TEST_F(Redirect, DoesNotReadAnEndlessBody)
{
	RawServer server(
		[](Connection& connection)
		{
			if (targetOf(connection.readHead()) == "/next")
			{
				connection.send(answer(200, "arrived"));
				return;
			}
			connection.send("HTTP/1.1 302 Found\r\nLocation: /next\r\n\r\n");
			for (;;)
			{
				connection.send(std::string(10000, 'x'));
			}
		});
	Exchange& exchange = get(server.url());
	EXPECT_TRUE(exchange.succeeded());
	EXPECT_EQ(exchange.body(), "arrived");
}
