#include "HttpFixture.h"
#include "Lab/Behaviours/Uploads.h"
#include "RandomBytes.h"
#include "TempDir.h"

#include <filesystem>

namespace
{
	class Body : public HttpTest
	{
	protected:
		Body() { sink.at("*", ""); }
		const Lab::Request& last() const { return *sink.log().back().request; }
		Exchange& makeFromFile(const std::string& name)
		{
			Exchange& exchange = make(sink.url(), "PUT");
			EXPECT_TRUE(exchange.request().SetContentAsStreamedFile(text(Dir.path(name))));
			return exchange;
		}

		TempDir Dir;
		Lab::Origin sink;
	};
} // namespace

TEST_F(Body, TextGoesOutAsUtf8BehindItsLengthWithEveryVerbAndAGetHasNone)
{
	for (const std::string verb : {"GET", "POST", "PUT", "PATCH", "DELETE", "PURGE"})
	{
		for (const std::string content : {"", "Grüße"})
		{
			Exchange& exchange = make(sink.url(), verb.c_str());
			exchange.request().SetHeader("Content-Type", "text/plain");
			exchange.request().SetContentAsString(text(content));
			const bool refused = verb == "GET" && !content.empty();
			EXPECT_EQ(run(exchange).succeeded(), !refused) << verb;
			if (!refused)
			{
				EXPECT_EQ(last().head,
					verb + " / HTTP/1.1\r\n" + firstHeaders(sink.authority()) +
						"User-Agent: test\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(content.size()) + "\r\n\r\n");
				EXPECT_EQ(last().body, content) << verb;
			}
		}
	}
	EXPECT_EQ(sink.connections(), 1u);
}

TEST_F(Body, OfAPostWithoutATypeEndsTheProcess)
{
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	const auto send = [this](const char* content)
	{
		Exchange& exchange = make(sink.url(), "POST");
		exchange.request().SetContentAsString(content);
		run(exchange);
	};
	send("only-safe_letters.~1");
	EXPECT_EQ(last().body, "only-safe_letters.~1");
	EXPECT_DEATH(send("a=1"), "");
}

TEST_F(Body, FilesAreOpenedByTheStartAndLargeOnesDoNotWaitForPermission)
{
	const std::string content = randomBytes(5 << 20);
	Exchange& exchange = makeFromFile("late");
	Dir.write("late", content);
	uint64 sizeAtTheEnd = 1;
	exchange.onProgress = [&](IHttpRequest& request) { sizeAtTheEnd = request.GetContentLength(); };
	EXPECT_TRUE(run(exchange).succeeded());
	EXPECT_EQ(last().header("Expect"), "");
	EXPECT_TRUE(last().body == content);
	EXPECT_EQ(exchange.progress().back().sent, content.size());
	EXPECT_EQ(sizeAtTheEnd, 0u) << "closed before the last progress";
	for (const char* unreadable : {"missing", ""})
	{
		Exchange& refused = makeFromFile(unreadable);
		EXPECT_FALSE(refused.start());
		ASSERT_TRUE(waitFor([&] { return refused.completed(); }));
		EXPECT_FALSE(refused.succeeded());
	}
	EXPECT_EQ(sink.requests(), 1u);
}

TEST_F(Body, SendingIsToldOnTheGameThreadOnly)
{
	for (const Policy policy : {Policy::CompleteOnHttpThread, Policy::CompleteOnGameThread})
	{
		constexpr int size = 32 << 20;
		Lab::Gate answered;
		Lab::Origin server;
		server.at("/", Lab::hold(answered));
		Exchange& exchange = make(server.url(), "PUT", policy);
		TArray<uint8> content;
		content.SetNumUninitialized(size);
		exchange.request().SetContent(std::move(content));
		ASSERT_TRUE(exchange.start());
		ASSERT_TRUE(pumpUntil([&] { return server.running() == 1; }));
		EXPECT_EQ(exchange.progress().empty(), policy == Policy::CompleteOnHttpThread);
		answered.open();
		ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
		EXPECT_EQ(exchange.progress().back().sent, uint64(size));
	}
}

TEST_F(Body, StreamsAreReadOnTheHttpThread)
{
	const std::string content = randomBytes(300'000);
	for (const size_t breaksAt : {content.npos, size_t(100'000)})
	{
		const TSharedRef<BytesArchive> stream = MakeShared<BytesArchive>(content, breaksAt);
		Exchange& exchange = make(sink.url(), "PUT");
		EXPECT_TRUE(exchange.request().SetContentFromStream(stream));
		EXPECT_TRUE(run(exchange).succeeded()); // also of one in error: nobody asks
		EXPECT_TRUE(stream->askedOnlyElsewhere);
	}
	EXPECT_TRUE(sink.log().front().request->body == content);
}

TEST_F(Body, IsNotSentAgainOnceItMayHaveArrived)
{
	for (const std::string verb : {"GET", "POST"})
	{
		Lab::Origin server; // the second request finds its connection broken
		server.at("/", [](const Lab::Request& request) { return request.number == 2 ? Lab::drop() : Lab::Behaviour(""); });
		ASSERT_TRUE(get(server.url()).succeeded());
		Exchange& exchange = make(server.url(), verb.c_str());
		exchange.request().SetContentAsString(verb == "POST" ? "x" : "");
		EXPECT_EQ(run(exchange).succeeded(), verb == "GET");
		EXPECT_EQ(server.requests(), verb == "GET" ? 3u : 2u);
	}
}

TEST_F(Body, AnAnnouncedLengthThatIsWrongCostsTheConnection)
{
	Lab::Origin server;
	server.at("/", Lab::upload({.refusesAfter = 0}), Lab::raw("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n", Lab::RawEnd::Stall));
	for (uint64_t round = 1; round <= 4; ++round)
	{
		Exchange& exchange = make(server.url(), round % 2 ? "GET" : "HEAD"); // without the body that both announce
		round % 2 ? exchange.request().SetHeader("Content-Length", "3") : exchange.request().SetContentAsString("abc");
		EXPECT_TRUE(run(exchange).succeeded());
		EXPECT_EQ(server.connections(), round);
	}
}
