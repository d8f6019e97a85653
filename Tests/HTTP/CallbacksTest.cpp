#include "HttpFixture.h"

#include "Host/GameThreadTasks.h"

#include <atomic>

namespace
{
	class Callbacks : public HttpTest, public testing::WithParamInterface<Policy>
	{
	protected:
		Callbacks()
		{
			slow.at("/", "abcdefghi", Lab::hold(rest, {.byte = 3}));
			quick.at("*", [](const Lab::Request& request) { return request.target; });
		}
		bool onGameThread() const { return GetParam() == Policy::CompleteOnGameThread; }
		Exchange& make(const std::string& url) { return HttpTest::make(url, nullptr, GetParam()); }
		/** Starts a request of which the first three bytes come, and waits for them. */
		Exchange& begin()
		{
			Exchange& exchange = make(slow.url());
			EXPECT_TRUE(exchange.start());
			EXPECT_TRUE(pumpUntil([&] { return exchange.received() == 3; }));
			return exchange;
		}
		/** All of its callbacks must have come on the one thread that it asked for. */
		void expectThreadOf(const Exchange& exchange)
		{
			EXPECT_EQ(exchange.record().threads.size(), 1u);
			EXPECT_EQ(exchange.record().threads.contains(std::this_thread::get_id()), onGameThread());
		}

		Lab::Gate rest; // six bytes more
		Lab::Origin slow, quick;
	};
} // namespace

INSTANTIATE_TEST_SUITE_P(Policies, Callbacks, testing::Values(Policy::CompleteOnGameThread, Policy::CompleteOnHttpThread),
	[](const auto& row) { return row.param == Policy::CompleteOnGameThread ? "GameThread" : "HttpThread"; });

TEST_P(Callbacks, RunWhereTheRequestAsked)
{
	Exchange& exchange = begin();
	rest.open();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
	EXPECT_EQ(exchange.progress().size(), 2u);
	EXPECT_EQ(exchange.received(), 9u);
	expectThreadOf(exchange);
}

TEST_P(Callbacks, OfARefusedRequestComeAtOnceOnTheGameThreadOnly)
{
	Exchange& exchange = make("");
	EXPECT_FALSE(exchange.start());
	EXPECT_TRUE(exchange.completed() || !onGameThread());
	ASSERT_TRUE(waitFor([&] { return exchange.completed(); }));
	expectThreadOf(exchange);
	EXPECT_FALSE(exchange.succeeded());
	EXPECT_FALSE(exchange.response().IsValid());
	EXPECT_EQ(exchange.request().GetFailureReason(), EHttpFailureReason::Other);
}

TEST_P(Callbacks, CancelWithinTheStartSendsNothing)
{
	// The HTTP thread stands still in a callback meanwhile, so that it finds start and cancel together.
	Lab::Gate reached, busy;
	Exchange& blocker = HttpTest::make(quick.url());
	blocker.onProgress = [&](IHttpRequest&)
	{
		reached.open();
		busy.wait();
	};
	blocker.start();
	reached.wait();
	Exchange& exchange = make(slow.url());
	EXPECT_TRUE(exchange.start());
	exchange.request().CancelRequest();
	busy.open();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
	EXPECT_FALSE(exchange.succeeded());
	EXPECT_EQ(slow.connections(), 0u);
}

TEST_P(Callbacks, CancelKeepsWhatArrivedAndTellsNoCode)
{
	Exchange& exchange = begin();
	exchange.request().CancelRequest();
	exchange.request().CancelRequest();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
	EXPECT_FALSE(exchange.succeeded());
	EXPECT_EQ(exchange.code(), 0);
	EXPECT_EQ(utf8(exchange.response()->GetHeader("Content-Length")), "9");
	EXPECT_EQ(exchange.body(), "abc");
	EXPECT_EQ(exchange.request().GetFailureReason(), EHttpFailureReason::Cancelled);
	EXPECT_FALSE(exchange.request().GetResponse().IsValid());
	exchange.request().CancelRequest();
}

TEST_P(Callbacks, CancelAtAnyMomentCompletesOnce)
{
	std::vector<Exchange*> exchanges;
	for (int i = 0; i < 100; ++i)
	{
		Exchange& exchange = *exchanges.emplace_back(&make(quick.url("/" + std::to_string(i))));
		ASSERT_TRUE(exchange.start());
		const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(i * 10);
		while (std::chrono::steady_clock::now() < end)
		{
		}
		exchange.request().CancelRequest();
	}
	for (size_t i = 0; i < exchanges.size(); ++i)
	{
		ASSERT_TRUE(pumpUntil([&] { return exchanges[i]->completed(); }));
		EXPECT_EQ(exchanges[i]->request().GetResponse().IsValid(), exchanges[i]->succeeded());
		EXPECT_TRUE(!exchanges[i]->succeeded() || exchanges[i]->body() == "/" + std::to_string(i));
	}
} // the fixture counts the completions

TEST_P(Callbacks, StopCompletesWhatRuns)
{
	const Exchange* const exchanges[] = {&begin(), &begin(), &begin()};
	HttpService::Stop();
	GameThreadTasks::RunQueued();
	for (const Exchange* exchange : exchanges)
	{
		EXPECT_EQ(exchange->record().completions, 1);
		EXPECT_FALSE(exchange->succeeded());
		EXPECT_EQ(exchange->body(), "abc");
	}
}

TEST_P(Callbacks, NeedNoHolderOfTheRequestAndMayStartTheNext)
{
	std::atomic<bool> done = false;
	const std::function<void(int)> start = [&](int left)
	{
		const FHttpRequestRef request = FHttpModule::Get().CreateRequest();
		request->SetURL(text(quick.url("/held")));
		request->SetDelegateThreadPolicy(GetParam());
		request->OnProcessRequestComplete().BindLambda(
			[&, left](FHttpRequestPtr self, FHttpResponsePtr response, bool)
			{
				EXPECT_EQ(bytesOf(response->GetContent()), "/held");
				EXPECT_EQ(self->GetResponse(), response);
				left > 0 ? start(left - 1) : void(done = true);
			});
		EXPECT_TRUE(request->ProcessRequest());
	};
	start(50);
	EXPECT_TRUE(pumpUntil([&] { return done.load(); }));
	EXPECT_EQ(quick.connections(), 1u);
}

namespace
{
	class Service : public HttpTest
	{
	protected:
		Service() { server.at("/", "x"); }
		Lab::Origin server;
	};
} // namespace

TEST_F(Service, ForcesTheGameThreadWhenTold)
{
	Settings.bForceGameThreadCallbacks = true;
	restart();
	EXPECT_EQ(get(server.url()).record().threads, std::set{std::this_thread::get_id()});
}

TEST_F(Service, RefusesRequestsWhileStopped)
{
	HttpService::Stop();
	Exchange& refused = make(server.url());
	EXPECT_FALSE(refused.start());
	EXPECT_FALSE(refused.completed());
	EXPECT_EQ(Log.count("LogHttp", ELogVerbosity::Error, "not running"), 1);
	HttpService::Start(Settings);
	refused.request().CancelRequest();
	EXPECT_TRUE(get(server.url()).succeeded());
	ASSERT_TRUE(pumpUntil([&] { return refused.completed(); }));
	EXPECT_FALSE(refused.succeeded());
	EXPECT_EQ(server.requests(), 1u);
}
