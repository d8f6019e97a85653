#include "HttpFixture.h"

#include "Host/GameThreadTasks.h"

#include <atomic>

namespace
{
	class Callbacks : public HttpTest, public testing::WithParamInterface<Policy>
	{
	protected:
		bool onGameThread() const { return GetParam() == Policy::CompleteOnGameThread; }
		Exchange& make(const std::string& url) { return HttpTest::make(url, nullptr, GetParam()); }
	};

	/** Sends the first three bytes of a body of nine, and the rest when the gate opens. */
	RawServer::Script inTwoParts(Gate& gate)
	{
		return [&gate](Connection& connection)
		{
			connection.readHead();
			connection.send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc");
			connection.waitFor(gate);
			connection.send("defghi");
			connection.waitForPeer();
		};
	}
} // namespace

INSTANTIATE_TEST_SUITE_P(Policies, Callbacks, testing::Values(Policy::CompleteOnGameThread, Policy::CompleteOnHttpThread),
	[](const auto& row) { return row.param == Policy::CompleteOnGameThread ? "GameThread" : "HttpThread"; });

TEST_P(Callbacks, RunWhereTheRequestAsked)
{
	Gate gate;
	RawServer server(inTwoParts(gate));
	Exchange& exchange = make(server.url());
	ASSERT_TRUE(exchange.start());
	ASSERT_TRUE(pumpUntil([&] { return exchange.received() == 3; }));
	gate.open();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));

	EXPECT_EQ(exchange.record().completionThread == std::this_thread::get_id(), onGameThread());
	ASSERT_EQ(exchange.progress().size(), 2u);
	EXPECT_EQ(exchange.received(), 9u);
	EXPECT_EQ(exchange.progress()[0].thread, exchange.record().completionThread);
	EXPECT_EQ(exchange.progress()[1].thread, exchange.record().completionThread);
}

TEST_P(Callbacks, OfARefusedRequestComeAtOnceOnTheGameThreadOnly)
{
	Exchange& exchange = make("ftp://refused/");
	EXPECT_FALSE(exchange.start());
	EXPECT_TRUE(exchange.completed() || !onGameThread());
	ASSERT_TRUE(waitFor([&] { return exchange.completed(); }));
	EXPECT_EQ(exchange.record().completionThread == std::this_thread::get_id(), onGameThread());
	EXPECT_FALSE(exchange.succeeded());
	EXPECT_FALSE(exchange.response().IsValid());
	EXPECT_EQ(exchange.request().GetFailureReason(), EHttpFailureReason::Other);
}

TEST_P(Callbacks, CancelWithinTheStartSendsNothing)
{
	RawServer server(answering([](const std::string&) { return answer(200, "x"); }));
	// The HTTP thread stands still in a callback meanwhile, so that it finds start and cancel together.
	Gate busy;
	std::atomic<bool> inCallback = false;
	const FHttpRequestRef blocker = FHttpModule::Get().CreateRequest();
	blocker->SetURL(text("ftp://refused/"));
	blocker->SetDelegateThreadPolicy(Policy::CompleteOnHttpThread);
	blocker->OnProcessRequestComplete().BindLambda(
		[&](FHttpRequestPtr, FHttpResponsePtr, bool)
		{
			inCallback = true;
			busy.wait({});
		});
	blocker->ProcessRequest();
	ASSERT_TRUE(waitFor([&] { return inCallback.load(); }));
	Exchange& exchange = make(server.url());
	EXPECT_TRUE(exchange.start());
	exchange.request().CancelRequest();
	busy.open();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
	EXPECT_FALSE(exchange.succeeded());
	EXPECT_EQ(server.connectionCount(), 0);
}

TEST_P(Callbacks, CancelKeepsWhatArrivedAndTellsNoCode)
{
	Gate gate;
	RawServer server(inTwoParts(gate));
	Exchange& exchange = make(server.url());
	ASSERT_TRUE(exchange.start());
	ASSERT_TRUE(pumpUntil([&] { return exchange.received() == 3; }));
	exchange.request().CancelRequest();
	exchange.request().CancelRequest();
	ASSERT_TRUE(pumpUntil([&] { return exchange.completed(); }));
	EXPECT_FALSE(exchange.succeeded());
	EXPECT_EQ(exchange.code(), 0);
	EXPECT_EQ(exchange.header("Content-Length"), "9");
	EXPECT_EQ(exchange.body(), "abc");
	EXPECT_EQ(exchange.request().GetFailureReason(), EHttpFailureReason::Cancelled);
	EXPECT_FALSE(exchange.request().GetResponse().IsValid());
	exchange.request().CancelRequest();
}

TEST_P(Callbacks, CancelAtAnyMomentCompletesOnce)
{
	RawServer server(answering([](const std::string& head) { return answer(200, targetOf(head)); }));
	std::vector<Exchange*> exchanges;
	for (int i = 0; i < 100; ++i)
	{
		Exchange& exchange = *exchanges.emplace_back(&make(server.url("/" + std::to_string(i))));
		ASSERT_TRUE(exchange.start());
		const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(i * 10);
		while (std::chrono::steady_clock::now() < end)
		{
		}
		exchange.request().CancelRequest();
	}
	ASSERT_TRUE(
		pumpUntil([&] { return std::all_of(exchanges.begin(), exchanges.end(), [](const Exchange* each) { return each->completed(); }); }));
	for (size_t i = 0; i < exchanges.size(); ++i)
	{
		EXPECT_EQ(exchanges[i]->request().GetResponse().IsValid(), exchanges[i]->succeeded());
		EXPECT_TRUE(!exchanges[i]->succeeded() || exchanges[i]->body() == "/" + std::to_string(i));
	}
} // the fixture counts the completions

TEST_P(Callbacks, StopCompletesWhatRuns)
{
	Gate gate;
	RawServer server(inTwoParts(gate));
	std::vector<Exchange*> exchanges;
	for (int i = 0; i < 20; ++i)
	{
		ASSERT_TRUE(exchanges.emplace_back(&make(server.url()))->start());
	}
	ASSERT_TRUE(pumpUntil(
		[&] { return std::all_of(exchanges.begin(), exchanges.end(), [](const Exchange* each) { return each->received() == 3; }); }));
	HttpService::Stop();
	GameThreadTasks::RunQueued();
	for (const Exchange* exchange : exchanges)
	{
		EXPECT_EQ(exchange->record().completions, 1);
		EXPECT_FALSE(exchange->succeeded());
		EXPECT_EQ(exchange->body(), "abc");
	}
}

TEST_P(Callbacks, StartedRequestNeedsNoHolder)
{
	RawServer server(answering([](const std::string&) { return answer(200, "held"); }));
	std::atomic<bool> done = false;
	{
		const FHttpRequestRef request = FHttpModule::Get().CreateRequest();
		request->SetURL(text(server.url()));
		request->SetDelegateThreadPolicy(GetParam());
		request->OnProcessRequestComplete().BindLambda([&done](FHttpRequestPtr self, FHttpResponsePtr response, bool)
			{ done = bytesOf(response->GetContent()) == "held" && self->GetResponse() == response; });
		ASSERT_TRUE(request->ProcessRequest());
	}
	EXPECT_TRUE(pumpUntil([&] { return done.load(); }));
}

namespace
{
	class Service : public HttpTest
	{
	};
} // namespace

TEST_F(Service, ForcesTheGameThreadWhenTold)
{
	Settings.bForceGameThreadCallbacks = true;
	restart(Settings);
	RawServer server(answering([](const std::string&) { return answer(200, "x"); }));
	Exchange& exchange = get(server.url());
	EXPECT_EQ(exchange.record().completionThread, std::this_thread::get_id());
	EXPECT_EQ(exchange.progress().at(0).thread, std::this_thread::get_id());
}

TEST_F(Service, RefusesRequestsWhileStopped)
{
	RawServer server(answering([](const std::string&) { return answer(200, "x"); }));
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
	EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(Service, ACallbackMayStartTheNextRequest)
{
	RawServer server(answering([](const std::string&) { return answer(200, "x"); }));
	std::vector<FHttpRequestRef> requests;
	std::atomic<size_t> completed = 0;
	for (int number = 0; number < 50; ++number)
	{
		const FHttpRequestRef& request = requests.emplace_back(FHttpModule::Get().CreateRequest());
		request->SetURL(text(server.url()));
		request->SetDelegateThreadPolicy(Policy::CompleteOnHttpThread);
		request->OnProcessRequestComplete().BindLambda(
			[&](FHttpRequestPtr, FHttpResponsePtr, bool succeeded)
			{
				const size_t next = completed += succeeded;
				EXPECT_TRUE(next == requests.size() || requests[next]->ProcessRequest());
			});
	}
	requests[0]->ProcessRequest();
	EXPECT_TRUE(waitFor([&] { return completed == requests.size(); }));
	EXPECT_EQ(server.connectionCount(), 1);
}
