#include "HttpFixture.h"
#include "TempDir.h"

#include <fstream>

namespace
{
	/** Answers a request after reading a body of the announced length, and keeps that body. */
	class Sink
	{
	public:
		std::string url() const { return Server.url("/up"); }
		std::vector<std::string> heads() const { return Server.requests(); }
		std::string body() const
		{
			const std::scoped_lock lock(Mutex);
			return Body;
		}

	private:
		static size_t announced(const std::string& head)
		{
			const size_t at = head.find("Content-Length: ");
			return at == head.npos ? 0 : std::stoul(head.substr(at + 16));
		}

		mutable std::mutex Mutex;
		std::string Body;
		RawServer Server{[this](Connection& connection)
			{
				for (;;)
				{
					const size_t length = announced(connection.readHead());
					std::string body = connection.read(length);
					{
						const std::scoped_lock lock(Mutex);
						Body = std::move(body);
					}
					connection.send(answer(200, "thanks"));
				}
			}};
	};

	class Body : public HttpTest
	{
	protected:
		Exchange& post(const std::string& url, const char* content)
		{
			Exchange& exchange = make(url);
			exchange.request().SetVerb("POST");
			exchange.request().SetHeader("Content-Type", "text/plain");
			exchange.request().SetContentAsString(text(content));
			return exchange;
		}

		TempDir Dir;
		Sink TheSink;
	};

	std::string headOf(const std::string& url, std::string_view verb, std::string_view own, std::string_view length)
	{
		std::string head = std::string(verb) + " /up HTTP/1.1\r\nHost: " + url.substr(7, url.rfind('/') - 7) + "\r\nAccept: */*\r\n";
		return head.append(own).append(length).append("\r\n");
	}
} // namespace

TEST_F(Body, TextGoesOutAsUtf8BehindItsLength)
{
	run(post(TheSink.url(), "Grüße"));
	EXPECT_EQ(TheSink.heads().back(), headOf(TheSink.url(), "POST", "Content-Type: text/plain\r\n", "Content-Length: 7\r\n"));
	EXPECT_EQ(TheSink.body(), "Grüße");
}

TEST_F(Body, BytesGoOutAsTheyAre)
{
	TArray<uint8> content{0, 13, 10, 255};
	Exchange& exchange = post(TheSink.url(), "text that the bytes replace");
	exchange.request().SetContent(std::move(content));
	EXPECT_EQ(exchange.request().GetContentLength(), 4u);
	EXPECT_TRUE(run(exchange).succeeded());
	EXPECT_EQ(TheSink.body(), std::string("\0\r\n\xFF", 4));
}

TEST_F(Body, EmptyOnesAreAnnouncedOnlyWhereTheVerbHasABody)
{
	struct Case
	{
		const char* verb;
		bool announced;
	};
	for (const Case& c : {Case{"POST", true}, {"PUT", true}, {"PATCH", true}, {"GET", false}, {"DELETE", false}, {"OPTIONS", false}})
	{
		Exchange& exchange = post(TheSink.url(), "");
		exchange.request().SetVerb(c.verb);
		EXPECT_TRUE(run(exchange).succeeded()) << c.verb;
		EXPECT_EQ(TheSink.heads().back(),
			headOf(TheSink.url(), c.verb, "Content-Type: text/plain\r\n", c.announced ? "Content-Length: 0\r\n" : ""));
	}
}

TEST_F(Body, AnyVerbButHeadMayCarryOne)
{
	for (const char* verb : {"GET", "DELETE", "PUT", "TRACE"})
	{
		Exchange& exchange = post(TheSink.url(), "abc");
		exchange.request().SetVerb(verb);
		EXPECT_TRUE(run(exchange).succeeded()) << verb;
		EXPECT_EQ(TheSink.body(), "abc") << verb;
	}
	Exchange& head = post(TheSink.url(), "abc");
	head.request().SetVerb("HEAD");
	EXPECT_TRUE(run(head).succeeded());
	EXPECT_EQ(TheSink.body(), "");
	EXPECT_EQ(head.body(), "");
}

TEST_F(Body, FilesAreStreamedAndLargeOnesDoNotWaitForPermission)
{
	std::string content(5 << 20, '\0');
	for (size_t at = 0; at < content.size(); ++at)
	{
		content[at] = static_cast<char>(at * 7 + at / 251);
	}
	Exchange& exchange = make(TheSink.url());
	exchange.request().SetVerb("PUT");
	EXPECT_TRUE(exchange.request().SetContentAsStreamedFile(text(Dir.write("a.bin", content))));
	EXPECT_EQ(exchange.request().GetContentLength(), content.size());
	EXPECT_TRUE(run(exchange).succeeded());
	EXPECT_EQ(TheSink.heads().back().find("Expect"), std::string::npos);
	EXPECT_EQ(TheSink.heads().back().find("Content-Type"), std::string::npos) << "nobody named one";
	EXPECT_TRUE(TheSink.body() == content);
	EXPECT_EQ(exchange.progress().back().sent, content.size());
}

TEST_F(Body, FilesThatCannotBeReadAreRefusedAtOnce)
{
	Exchange& exchange = make(TheSink.url());
	EXPECT_FALSE(exchange.request().SetContentAsStreamedFile(text(Dir.path("missing"))));
	EXPECT_FALSE(exchange.request().SetContentAsStreamedFile(text(Dir.path())));
	EXPECT_TRUE(run(exchange).succeeded()) << "without a body it is an ordinary request";
}

TEST_F(Body, AFileThatShrinksFailsTheRequestAndOneThatGrowsIsCut)
{
	for (const bool shrinks : {true, false})
	{
		const std::string path = Dir.write("a.bin", std::string(1 << 20, 'x'));
		Exchange& exchange = make(TheSink.url());
		exchange.request().SetVerb("PUT");
		ASSERT_TRUE(exchange.request().SetContentAsStreamedFile(text(path)));
		std::filesystem::resize_file(path, shrinks ? 1000 : 2 << 20);
		EXPECT_EQ(run(exchange).succeeded(), !shrinks);
	}
	EXPECT_EQ(TheSink.body(), std::string(1 << 20, 'x'));
}

TEST_F(Body, AnAnnouncedLengthThatIsWrongCostsTheConnection)
{
	RawServer server(answering([](const std::string&) { return answer(200, "ok"); }));
	for (int round = 0; round < 2; ++round)
	{
		Exchange& exchange = make(server.url());
		exchange.request().SetHeader("Content-Length", "3"); // and no body
		EXPECT_TRUE(run(exchange).succeeded());
	}
	EXPECT_EQ(server.connectionCount(), 2);
}

TEST_F(Body, RedirectsRepeatOrDropItAsTheirCodeSays)
{
	struct Case
	{
		int code;
		const char* verb;
		const char* secondVerb;
		std::string secondBody;
	};
	const Case cases[] = {{301, "POST", "GET", ""}, {302, "POST", "GET", ""}, {303, "PUT", "GET", ""}, {307, "POST", "POST", "abc"},
		{308, "PUT", "PUT", "abc"}, {301, "PUT", "PUT", "abc"}};
	for (const Case& c : cases)
	{
		RawServer server(
			[&](Connection& connection)
			{
				connection.readHead();
				connection.read(3);
				connection.send(answer(c.code, "", "Location: " + TheSink.url() + "\r\n"));
				connection.waitForPeer();
			});
		Exchange& exchange = post(server.url(), "abc");
		exchange.request().SetVerb(c.verb);
		EXPECT_TRUE(run(exchange).succeeded()) << c.code;
		EXPECT_EQ(TheSink.heads().back().substr(0, 4), std::string(c.secondVerb).append(" ").substr(0, 4)) << c.code;
		EXPECT_EQ(TheSink.body(), c.secondBody) << c.code;
		EXPECT_EQ(TheSink.heads().back().find("Content-") != std::string::npos, !c.secondBody.empty()) << c.code;
	}
}

TEST_F(Body, ARedirectBeforeTheBodyWasReadStartsItAnew)
{
	const std::string content(8 << 20, 'y');
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.read(1000);
			connection.send(answer(307, "", "Location: " + TheSink.url() + "\r\n"));
			connection.waitForPeer();
		});
	Exchange& exchange = post(server.url(), "");
	exchange.request().SetContentAsString(text(content));
	EXPECT_TRUE(run(exchange).succeeded());
	EXPECT_TRUE(TheSink.body() == content);
	EXPECT_EQ(exchange.progress().back().sent, content.size());
}
