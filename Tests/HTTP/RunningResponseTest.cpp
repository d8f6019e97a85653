#include "HttpFixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{
	class RunningResponse : public HttpTest
	{
	protected:
		/** Runs a request with a record of the lines that it was told of. */
		Exchange& listen(const std::string& url)
		{
			seen.clear();
			Exchange& exchange = make(url);
			exchange.request().OnStatusCodeReceived().BindLambda([this](FHttpRequestPtr, int32 code) { note(std::to_string(code)); });
			exchange.request().OnHeaderReceived().BindLambda(
				[this](FHttpRequestPtr, const FString& name, const FString& value) { note(utf8(name) + "=" + utf8(value)); });
			return run(exchange);
		}

		/** Has the body go through a function. */
		static void stream(Exchange& exchange, std::function<void(std::string_view, int64&)> take)
		{
			FHttpRequestStreamDelegateV2 streamer;
			streamer.BindLambda(
				[take = std::move(take)](void* data, int64& length) {
					take({static_cast<char*>(data), static_cast<size_t>(length)}, length);
				});
			EXPECT_TRUE(exchange.request().SetResponseBodyReceiveStreamDelegateV2(streamer));
		}

		std::vector<std::string> seen; // on the HTTP thread, until a request has completed

	private:
		void note(std::string line)
		{
			EXPECT_NE(std::this_thread::get_id(), home);
			seen.push_back(std::move(line));
		}
		const std::thread::id home = std::this_thread::get_id();
	};
} // namespace

TEST_F(RunningResponse, ShowsItsLengthAndItsBytesAndNothingElse)
{
	Lab::Gate second;
	Lab::Origin server;
	server.at("/", "abcdefghi", Lab::headers({{"X-A", "1"}}), Lab::hold(second, {.byte = 3}));
	Exchange& exchange = make(server.url());
	std::vector<std::string> bodies;
	exchange.onProgress = [&](IHttpRequest& request)
	{
		const FHttpResponsePtr response = request.GetResponse();
		EXPECT_EQ(response->GetResponseCode(), 0);
		EXPECT_EQ(response->GetContentLength(), 9u);
		EXPECT_TRUE(response->GetHeader("X-A").IsEmpty());
		EXPECT_TRUE(response->GetAllHeaders().IsEmpty());
		bodies.push_back(bytesOf(response->GetContent()));
	};
	EXPECT_FALSE(exchange.request().GetResponse().IsValid());
	ASSERT_TRUE(exchange.start());
	ASSERT_TRUE(waitFor([&] { return exchange.received() == 3; }));
	second.open();
	ASSERT_TRUE(waitFor([&] { return exchange.completed(); }));
	EXPECT_THAT(bodies, ElementsAre("abc", "abcdefghi"));
	EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Warning, "still coming in"), 6);
	EXPECT_EQ(exchange.code(), 200);
	EXPECT_EQ(utf8(exchange.response()->GetHeader("x-a")), "1");
}

TEST_F(RunningResponse, TellsItsLinesAsTheyComeButThoseOfRedirects)
{
	const Lab::Behaviour hidden = Lab::headers({{"X-A", "hidden"}});
	Lab::Origin server;
	server.at("/", "moved", Lab::redirect({.to = "/there"}), hidden).at("/unchanged", Lab::status({.code = 304}), hidden);
	server.at("/there", Lab::raw("HTTP/1.1 103 Early\r\nX-A: 1\r\n\r\nHTTP/1.1 404 No\r\nContent-Length: 1\r\nx-a: 2\r\n\r\nx"));
	listen(server.url());
	EXPECT_THAT(seen, ElementsAre("103", "X-A=1", "404", "Content-Length=1", "x-a=2"));
	Exchange& unchanged = listen(server.url("/unchanged"));
	EXPECT_THAT(seen, IsEmpty());
	EXPECT_EQ(unchanged.code(), 304);
	EXPECT_TRUE(unchanged.response()->GetAllHeaders().IsEmpty());
}

TEST_F(RunningResponse, ReportsEachBlockOnceAndNeverTwiceTheSame)
{
	constexpr size_t size = 20 << 20;
	Lab::Origin server;
	server.at("/", std::string(size, 'x'));
	const std::vector<Exchange::Progress> progress = get(server.url()).progress();
	EXPECT_GE(progress.size(), size / (64 << 10)) << "nothing is put together";
	EXPECT_EQ(progress.back().received, size);
	for (size_t i = 1; i < progress.size(); ++i)
	{
		EXPECT_GT(progress[i].received, progress[i - 1].received);
	}
}

TEST_F(RunningResponse, MayGoToAStreamInsteadOfTheResponse)
{
	Lab::Origin server;
	server.at("/", "abcdefghi");
	for (const bool fits : {true, false})
	{
		const TSharedRef<BytesArchive> archive = MakeShared<BytesArchive>("", fits ? 9 : 0);
		Exchange& toArchive = make(server.url());
		EXPECT_TRUE(toArchive.request().SetResponseBodyReceiveStream(archive));
		std::string bytes;
		Exchange& toDelegate = make(server.url());
		stream(toDelegate,
			[&](std::string_view block, int64& length)
			{
				bytes += block;
				length -= !fits;
			});
		for (Exchange* exchange : {&toArchive, &toDelegate})
		{
			EXPECT_EQ(run(*exchange).succeeded(), fits);
			EXPECT_EQ(exchange->body(), "");
			EXPECT_EQ(exchange->code(), 200);
			EXPECT_EQ(exchange->received(), 9u);
		}
		EXPECT_TRUE(!fits || (bytes == "abcdefghi" && archive->bytes == bytes));
	}
}

TEST_F(RunningResponse, PassesNothingOnBehindACancel)
{
	// Both chunks come in one piece, so the second, and the end, are at hand before the cancel is carried out.
	Lab::Origin server;
	server.at("/", Lab::raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n6\r\ndefghi\r\n0\r\n\r\n"));
	Exchange& exchange = make(server.url());
	std::string bytes;
	stream(exchange,
		[&](std::string_view block, int64&)
		{
			bytes += block;
			exchange.request().CancelRequest();
		});
	EXPECT_FALSE(run(exchange).succeeded());
	EXPECT_EQ(bytes, "abc");
}

TEST_F(RunningResponse, EndsAtALimitOfItsOwn)
{
	Lab::Origin server;
	server.at("/", "abcdefghi", Lab::stall({.at = {.byte = 3}}));
	for (const bool whole : {true, false})
	{
		Exchange& exchange = make(server.url());
		whole ? exchange.request().SetTimeout(0.1f) : exchange.request().SetActivityTimeout(0.1f);
		EXPECT_FALSE(run(exchange).succeeded());
		EXPECT_EQ(exchange.code(), 0);
		EXPECT_EQ(exchange.body(), "abc");
		EXPECT_EQ(exchange.request().GetFailureReason(), whole ? EHttpFailureReason::TimedOut : EHttpFailureReason::ConnectionError);
		EXPECT_EQ(exchange.start(), !whole) << "what ran out of time is not sent again";
		ASSERT_TRUE(waitFor([&] { return exchange.record().completions == 2; }));
	}
}
