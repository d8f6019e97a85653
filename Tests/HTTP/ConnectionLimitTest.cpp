#include "HttpFixture.h"

namespace
{
	using ConnectionLimit = HttpTest;
} // namespace

TEST_F(ConnectionLimit, ThreeHundredAtOnceShareSixConnections)
{
	RawServer server(answering([](const std::string&) { return answer(200, "ok"); }));
	std::vector<Exchange*> all;
	for (int number = 0; number < 300; ++number)
	{
		all.push_back(&make(server.url()));
		all.back()->start();
	}
	for (Exchange* exchange : all)
	{
		pumpUntil([&] { return exchange->completed(); });
		EXPECT_TRUE(exchange->succeeded());
	}
	EXPECT_EQ(server.connectionCount(), 6);
}

TEST_F(ConnectionLimit, WaitingIsOutsideTheTimeLimitsAndOtherHostsAreNotHeldUp)
{
	constexpr float limit = 1;
	Settings.connectionsPerHost = 2;
	Settings.connectTimeoutSeconds = limit;
	restart();
	Gate gate;
	RawServer busy(
		[&](Connection& connection)
		{
			const std::string head = connection.readHead();
			connection.waitFor(gate);
			connection.send(answer(200, targetOf(head), "Connection: close\r\n"));
		});
	RawServer silent([](Connection& connection) { connection.waitForPeer(); });

	std::vector<Exchange*> all;
	for (const char* path : {"/first", "/second", "/third", "/fourth", "/fifth"})
	{
		Exchange& exchange = *all.emplace_back(&make(busy.url(path)));
		if (all.size() > 2)
		{
			exchange.request().SetTimeout(limit);
			exchange.request().SetActivityTimeout(limit);
		}
		exchange.start();
	}
	Exchange& clock = make(silent.url());
	clock.request().SetTimeout(limit);
	EXPECT_FALSE(run(clock).succeeded()) << "the limit has passed";

	all[3]->request().CancelRequest();
	pumpUntil([&] { return all[3]->completed(); });
	EXPECT_EQ(all[3]->request().GetFailureReason(), EHttpFailureReason::Cancelled);
	EXPECT_EQ(busy.connectionCount(), 2);
	EXPECT_FALSE(all[2]->completed() || all[4]->completed());
	gate.open();
	for (Exchange* exchange : {all[0], all[1], all[2], all[4]})
	{
		pumpUntil([&] { return exchange->completed(); });
	}
	EXPECT_EQ(all[2]->body() + all[4]->body(), "/third/fifth");
	EXPECT_EQ(busy.connectionCount(), 4);

	for (int number = 0; number < 3; ++number)
	{
		make(silent.url()).start();
	}
	restart(); // completes what runs and what waits, or the end of the test finds it
}
