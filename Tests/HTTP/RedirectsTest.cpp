#include "HttpFixture.h"

#include <optional>

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
	for (const int hops : {0, 1, 19, 20, 21, 25})
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

TEST_F(Redirect, GoesWhereTheLocationSays)
{
	struct Case
	{
		const char* location;
		std::string target; // of the second request, empty = refused
		int firstCode = 302;
	};
	std::string location;
	int code = 0;
	std::mutex mutex;
	RawServer server(answering(
		[&](const std::string& head)
		{
			const std::scoped_lock lock(mutex);
			return targetOf(head) == "/from/here?q" ? answer(code, "moved", location) : answer(200, "arrived");
		}));
	const std::string here = server.authority();
	const std::string absolute = "HTTP://" + here + "/x";
	const std::string schemeless = "//" + here + "/x";
	const Case cases[] = {
		{"there", "/from/there"},
		{"/there?a=b#c", "/there?a=b"},
		{"../up", "/up"},
		{"?other", "/from/here?other"},
		{absolute.c_str(), "/x"},
		{schemeless.c_str(), "/x"},
		{"  \t/there\t ", "/there"},
		{"\xC3\xBC", "/from/%c3%bc"},
		{"/301", "/301", 301},
		{"/303", "/303", 303},
		{"/307", "/307", 307},
		{"/308", "/308", 308},
		{"file:///etc/passwd", ""},
		{"FILE:/etc/passwd", ""},
		{"ftp://127.0.0.1/x", ""},
		{"gopher://127.0.0.1/x", ""},
		{"http://", ""},
		{"http://[::1", ""},
	};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(each.location);
		{
			const std::scoped_lock lock(mutex);
			location = "Location:" + std::string(each.location) + "\r\n";
			code = each.firstCode;
		}
		const size_t before = server.requests().size();
		Exchange& exchange = get(server.url("/from/here?q"));
		const std::vector<std::string> requests = server.requests();
		ASSERT_EQ(requests.size() - before, each.target.empty() ? 1u : 2u);
		EXPECT_EQ(exchange.succeeded(), !each.target.empty());
		EXPECT_EQ(exchange.code(), each.target.empty() ? 302 : 200);
		EXPECT_EQ(exchange.body(), each.target.empty() ? "" : "arrived");
		if (!each.target.empty())
		{
			EXPECT_EQ(targetOf(requests.back()), each.target);
		}
	}
}

TEST_F(Redirect, OrdinaryAnswersStayWhatTheyAre)
{
	struct Case
	{
		int code;
		const char* headers;
	};
	for (const Case& each : {Case{302, ""}, Case{302, "Location:\r\n"}, Case{200, "Location: /x\r\n"}, Case{201, "Location: /x\r\n"},
			 Case{404, "Location: /x\r\n"}})
	{
		SCOPED_TRACE(std::to_string(each.code) + each.headers);
		RawServer server(answering([&](const std::string&) { return answer(each.code, "page", each.headers); }));
		Exchange& exchange = get(server.url());
		EXPECT_TRUE(exchange.succeeded());
		EXPECT_EQ(exchange.code(), each.code);
		EXPECT_EQ(exchange.body(), "page");
		EXPECT_EQ(server.requests().size(), 1u);
	}
}

TEST_F(Redirect, ChangesVerbAsTheCodeDemands)
{
	struct Case
	{
		int code;
		const char* verb;
		const char* nextVerb;
		bool dropsBody = false; // and what describes it
	};
	const Case cases[] = {{301, "POST", "GET", true}, {302, "POST", "GET", true}, {303, "POST", "GET", true}, {307, "POST", "POST"},
		{308, "POST", "POST"}, {301, "DELETE", "DELETE"}, {302, "DELETE", "DELETE"}, {303, "DELETE", "DELETE"}, {307, "DELETE", "DELETE"},
		{303, "HEAD", "HEAD"}, {302, "HEAD", "HEAD"}, {302, "GET", "GET"}};
	for (const Case& each : cases)
	{
		SCOPED_TRACE(std::to_string(each.code) + each.verb);
		RawServer server(answering(
			[&](const std::string& head)
			{
				const std::string whole = targetOf(head) == "/" ? redirectTo("/next", each.code) : answer(200, "arrived");
				return head.starts_with("HEAD") ? whole.substr(0, whole.find("\r\n\r\n") + 4) : whole;
			}));
		Exchange& exchange = make(server.url());
		exchange.request().SetVerb(text(each.verb));
		exchange.request().SetHeader(text("content-type"), text("text/plain"));
		exchange.request().SetHeader(text("X-Kept"), text("1"));
		run(exchange);
		EXPECT_TRUE(exchange.succeeded());
		ASSERT_EQ(server.requests().size(), 2u);
		const std::string next = server.requests()[1];
		EXPECT_THAT(next, testing::StartsWith(std::string(each.nextVerb) + " /next HTTP/1.1\r\n"));
		EXPECT_THAT(next, HasSubstr("\r\nX-Kept: 1\r\n"));
		EXPECT_EQ(next.find("content-type") == std::string::npos, each.dropsBody);
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
