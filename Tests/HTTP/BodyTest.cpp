#include "HttpFixture.h"
#include "TempDir.h"

#include <cstring>
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
		std::string head =
			std::string(verb) + " /up HTTP/1.1\r\n" + firstHeaders(url.substr(7, url.rfind('/') - 7)) + "User-Agent: test\r\n";
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

TEST_F(Body, TheirLengthIsAnnouncedWithEveryVerbAndAGetHasNone)
{
	for (const char* verb : {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "TRACE"})
	{
		for (const char* content : {"", "abc"})
		{
			Exchange& exchange = post(TheSink.url(), content);
			exchange.request().SetVerb(verb);
			const bool refused = verb == std::string("GET") && *content;
			EXPECT_EQ(run(exchange).succeeded(), !refused) << verb;
			if (!refused)
			{
				const std::string length = "Content-Length: " + std::to_string(std::string(content).size()) + "\r\n";
				EXPECT_EQ(TheSink.heads().back(), headOf(TheSink.url(), verb, "Content-Type: text/plain\r\n", length));
				EXPECT_EQ(TheSink.body(), content) << verb;
			}
		}
	}
}

TEST_F(Body, OfAPostWithoutATypeEndsTheProcess)
{
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	const auto send = [this](const char* content)
	{
		Exchange& exchange = make(TheSink.url());
		exchange.request().SetVerb("POST");
		exchange.request().SetContentAsString(content);
		run(exchange);
	};
	send("only-safe_letters.~1");
	EXPECT_EQ(TheSink.body(), "only-safe_letters.~1");
	EXPECT_DEATH(send("a=1"), "");
}

TEST_F(Body, FilesAreStreamedAndLargeOnesDoNotWaitForPermission)
{
	std::string content(5 << 20, '\0');
	for (size_t at = 0; at < content.size(); ++at)
	{
		content[at] = static_cast<char>(at * 7 + at / 251);
	}
	std::string body;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			body = connection.read(content.size());
			connection.send(answer(200, ""));
		});
	Exchange& exchange = make(server.url());
	exchange.request().SetVerb("PUT");
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
		Exchange& exchange = make(server.url(), policy);
		exchange.request().SetVerb("PUT");
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

namespace
{
	/** Endless bytes of one kind, read as a file is; notes where it is asked. */
	class Archive : public FArchive
	{
	public:
		explicit Archive(int64 size, int64 inBreaksAt = MAX_int64)
			: total(size)
			, breaksAt(inBreaksAt)
		{
		}
		int64 TotalSize() override { return note(total); }
		int64 Tell() override { return note(position); }
		void Seek(int64 to) override { position = note(to); }
		void Serialize(void* value, int64 length) override
		{
			std::memset(value, 'z', static_cast<size_t>(note(length)));
			position += length;
			if (position > breaksAt)
			{
				SetError();
			}
		}
		bool askedOnlyElsewhere = true;

	private:
		int64 note(int64 value)
		{
			askedOnlyElsewhere &= std::this_thread::get_id() != home;
			return value;
		}
		const std::thread::id home = std::this_thread::get_id();
		const int64 total, breaksAt;
		int64 position = 0;
	};
} // namespace

TEST_F(Body, StreamsAreReadOnTheHttpThread)
{
	for (const int64 breaksAt : {MAX_int64, int64(100'000)})
	{
		const TSharedRef<Archive> stream = MakeShared<Archive>(300'000, breaksAt);
		Exchange& exchange = make(TheSink.url());
		exchange.request().SetVerb("PUT");
		EXPECT_TRUE(exchange.request().SetContentFromStream(stream));
		EXPECT_EQ(run(exchange).succeeded(), breaksAt == MAX_int64);
		EXPECT_TRUE(stream->askedOnlyElsewhere);
	}
	EXPECT_EQ(TheSink.body(), std::string(300'000, 'z'));
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
		Exchange& exchange = make(server.url());
		exchange.request().SetVerb(verb);
		exchange.request().SetContentAsString(*verb == 'P' ? "x" : "");
		EXPECT_EQ(run(exchange).succeeded(), *verb == 'G') << verb;
		EXPECT_EQ(server.requests().size(), *verb == 'G' ? 3u : 2u);
	}
}

TEST_F(Body, FilesAreOpenedByTheStart)
{
	for (const char* name : {"missing", ""})
	{
		Exchange& exchange = make(TheSink.url());
		exchange.request().SetVerb("PUT");
		EXPECT_TRUE(exchange.request().SetContentAsStreamedFile(text(Dir.path(name))));
		EXPECT_FALSE(exchange.start());
		ASSERT_TRUE(waitFor([&] { return exchange.completed(); }));
		EXPECT_FALSE(exchange.succeeded());
	}
	Exchange& exchange = make(TheSink.url());
	exchange.request().SetVerb("PUT");
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
		Exchange& exchange = make(server.url());
		exchange.request().SetVerb("PUT");
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
			Exchange& exchange = make(server.url());
			exchange.request().SetVerb(verb);
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
		{308, "PUT", "PUT", "abc"}, {301, "PUT", "PUT", "abc"}, {303, "PATCH", "PATCH", "abc"}};
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
