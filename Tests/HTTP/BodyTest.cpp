#include "HttpFixture.h"
#include "RandomBytes.h"
#include "TempDir.h"

#include <filesystem>

namespace
{
	/** Answers a request after reading a body of the announced length, and keeps that body. */
	class Sink
	{
	public:
		std::string url() const { return Server.url("/up"); }
		std::vector<std::string> heads() const { return Server.requests(); }

		std::string body; // to be read behind the answer

	private:
		RawServer Server{[this](Connection& connection)
			{
				for (;;)
				{
					const std::string head = connection.readHead();
					const size_t at = head.find("Content-Length: ");
					body = connection.read(at == head.npos ? 0 : std::stoul(head.substr(at + 16)));
					connection.send(answer(200, "thanks"));
				}
			}};
	};

	class Body : public HttpTest
	{
	protected:
		Exchange& send(const std::string& url, const FString& content, const char* verb = "POST")
		{
			Exchange& exchange = make(url, verb);
			exchange.request().SetHeader("Content-Type", "text/plain");
			exchange.request().SetContentAsString(content);
			return run(exchange);
		}

		TempDir Dir;
		Sink TheSink;
	};
} // namespace

TEST_F(Body, TextGoesOutAsUtf8BehindItsLengthWithEveryVerbAndAGetHasNone)
{
	const std::string authority = TheSink.url().substr(7, TheSink.url().rfind('/') - 7);
	for (const std::string verb : {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "TRACE"})
	{
		for (const std::string content : {"", "Grüße"})
		{
			const bool refused = verb == "GET" && !content.empty();
			EXPECT_EQ(send(TheSink.url(), text(content), verb.c_str()).succeeded(), !refused) << verb;
			if (!refused)
			{
				EXPECT_EQ(TheSink.heads().back(),
					verb + " /up HTTP/1.1\r\n" + firstHeaders(authority) +
						"User-Agent: test\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(content.size()) + "\r\n\r\n");
				EXPECT_EQ(TheSink.body, content) << verb;
			}
		}
	}
}

TEST_F(Body, BytesGoOutAsTheyAre)
{
	Exchange& exchange = make(TheSink.url(), "PUT");
	exchange.request().SetContentAsString("text that the bytes replace");
	exchange.request().SetContent(TArray<uint8>{0, 13, 10, 255});
	EXPECT_EQ(exchange.request().GetContentLength(), 4u);
	EXPECT_TRUE(run(exchange).succeeded());
	EXPECT_EQ(TheSink.body, std::string("\0\r\n\xFF", 4));
}

TEST_F(Body, OfAPostWithoutATypeEndsTheProcess)
{
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	const auto send = [this](const char* content)
	{
		Exchange& exchange = make(TheSink.url(), "POST");
		exchange.request().SetContentAsString(content);
		run(exchange);
	};
	send("only-safe_letters.~1");
	EXPECT_EQ(TheSink.body, "only-safe_letters.~1");
	EXPECT_DEATH(send("a=1"), "");
}

TEST_F(Body, FilesAreStreamedAndLargeOnesDoNotWaitForPermission)
{
	const std::string content = randomBytes(5 << 20);
	std::string body;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			body = connection.read(content.size());
			connection.send(answer(200, ""));
		});
	Exchange& exchange = make(server.url(), "PUT");
	EXPECT_TRUE(exchange.request().SetContentAsStreamedFile(text(Dir.write("a.bin", content))));
	uint64 sizeAtTheEnd = 1;
	exchange.onProgress = [&](IHttpRequest& request) { sizeAtTheEnd = request.GetContentLength(); };
	EXPECT_TRUE(run(exchange).succeeded());
	EXPECT_EQ(server.requests().back().find("Expect"), std::string::npos);
	EXPECT_TRUE(body == content);
	EXPECT_EQ(exchange.progress().back().sent, content.size());
	EXPECT_EQ(sizeAtTheEnd, 0u) << "closed before the last progress";
}

TEST_F(Body, SendingIsToldOnTheGameThreadOnly)
{
	for (const Policy policy : {Policy::CompleteOnHttpThread, Policy::CompleteOnGameThread})
	{
		Gate read, answered;
		RawServer server(
			[&](Connection& connection)
			{
				connection.readHead();
				connection.read(32 << 20);
				read.open();
				connection.waitFor(answered);
				connection.send(answer(200, ""));
			});
		Exchange& exchange = make(server.url(), "PUT", policy);
		TArray<uint8> content;
		content.SetNumUninitialized(32 << 20);
		exchange.request().SetContent(std::move(content));
		ASSERT_TRUE(exchange.start());
		ASSERT_TRUE(pumpUntil([&] { return read.isOpen(); }));
		EXPECT_EQ(exchange.progress().empty(), policy == Policy::CompleteOnHttpThread);
		answered.open();
		ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
		EXPECT_EQ(exchange.progress().back().sent, uint64(32) << 20);
	}
}

TEST_F(Body, StreamsAreReadOnTheHttpThread)
{
	const std::string content = randomBytes(300'000);
	for (const size_t breaksAt : {content.npos, size_t(100'000)})
	{
		const TSharedRef<BytesArchive> stream = MakeShared<BytesArchive>(content, breaksAt);
		Exchange& exchange = make(TheSink.url(), "PUT");
		EXPECT_TRUE(exchange.request().SetContentFromStream(stream));
		EXPECT_EQ(run(exchange).succeeded(), breaksAt == content.npos);
		EXPECT_TRUE(stream->askedOnlyElsewhere);
	}
	EXPECT_TRUE(TheSink.body == content);
}

TEST_F(Body, IsNotSentAgainOnceItMayHaveArrived)
{
	for (const char* verb : {"GET", "POST"})
	{
		RawServer server(
			[&](Connection& connection)
			{
				connection.readHead();
				connection.read(connection.number() > 0 ? *verb == 'P' : 0);
				connection.send(answer(200, ""));
				if (connection.number() == 0)
				{
					connection.readHead(); // and hangs up without an answer
					connection.read(*verb == 'P');
				}
			});
		ASSERT_TRUE(get(server.url()).succeeded());
		Exchange& exchange = make(server.url(), verb);
		exchange.request().SetContentAsString(*verb == 'P' ? "x" : "");
		EXPECT_EQ(run(exchange).succeeded(), *verb == 'G') << verb;
		EXPECT_EQ(server.requests().size(), *verb == 'G' ? 3u : 2u);
	}
}

TEST_F(Body, FilesAreOpenedByTheStart)
{
	for (const char* name : {"missing", ""})
	{
		Exchange& exchange = make(TheSink.url(), "PUT");
		EXPECT_TRUE(exchange.request().SetContentAsStreamedFile(text(Dir.path(name))));
		EXPECT_FALSE(exchange.start());
		ASSERT_TRUE(waitFor([&] { return exchange.completed(); }));
		EXPECT_FALSE(exchange.succeeded());
	}
	Exchange& exchange = make(TheSink.url(), "PUT");
	EXPECT_TRUE(exchange.request().SetContentAsStreamedFile(text(Dir.path("late"))));
	Dir.write("late", "abc");
	EXPECT_TRUE(run(exchange).succeeded());
	EXPECT_EQ(TheSink.heads().size(), 1u);
}

TEST_F(Body, AFileThatShrinksFailsTheRequestAndOneThatGrowsIsCut)
{
	constexpr size_t size = 32 << 20;
	for (const bool shrinks : {true, false})
	{
		Gate changed;
		RawServer server(
			[&](Connection& connection)
			{
				connection.readHead();
				connection.waitFor(changed);
				connection.read(size);
				connection.send(answer(200, ""));
			});
		const std::string path = Dir.write("a.bin", std::string(size, 'x'));
		Exchange& exchange = make(server.url(), "PUT");
		ASSERT_TRUE(exchange.request().SetContentAsStreamedFile(text(path)));
		ASSERT_TRUE(exchange.start());
		ASSERT_TRUE(waitFor([&] { return !server.requests().empty(); }));
		std::filesystem::resize_file(path, shrinks ? 1000 : 2 * size);
		changed.open();
		ASSERT_TRUE(waitFor([&] { return exchange.completed(); }));
		EXPECT_EQ(exchange.succeeded(), !shrinks);
	}
}

TEST_F(Body, AnAnnouncedLengthThatIsWrongCostsTheConnection)
{
	for (const char* verb : {"GET", "HEAD"})
	{
		RawServer server(answering([](const std::string&) { return answer(200, ""); }));
		for (int round = 0; round < 2; ++round)
		{
			Exchange& exchange = make(server.url(), verb);
			if (verb == std::string("GET"))
			{
				exchange.request().SetHeader("Content-Length", "3"); // and no body
			}
			else
			{
				exchange.request().SetContentAsString("abc"); // announced and never sent
			}
			EXPECT_TRUE(run(exchange).succeeded());
		}
		EXPECT_EQ(server.connectionCount(), 2);
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
	Exchange& exchange = send(server.url(), text(content));
	EXPECT_TRUE(exchange.succeeded());
	EXPECT_TRUE(TheSink.body == content);
	EXPECT_EQ(exchange.progress().back().sent, content.size());
}
