#include "HttpFixture.h"

namespace
{
	using ConnectionLimit = HttpTest;
} // namespace

TEST_F(ConnectionLimit, ThreeHundredAtOnceShareSixConnections)
{
	Lab::Origin server;
	server.at("/", "ok");
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
	EXPECT_EQ(server.connections(), 6u);
}

TEST_F(ConnectionLimit, WaitingIsOutsideTheTimeLimitsAndOtherHostsAreNotHeldUp)
{
	constexpr float limit = 1;
	Settings.connectionsPerHost = 2;
	Settings.connectTimeoutSeconds = limit;
	restart();
	Lab::Gate gate;
	Lab::Origin busy, silent;
	busy.at(
		"*", [](const Lab::Request& request) { return request.target; }, Lab::hold(gate), Lab::closing());
	silent.at("/", Lab::stall());
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
	EXPECT_EQ(busy.connections(), 2u);
	EXPECT_FALSE(all[2]->completed() || all[4]->completed());
	gate.open();
	for (Exchange* exchange : {all[0], all[1], all[2], all[4]})
	{
		pumpUntil([&] { return exchange->completed(); });
	}
	EXPECT_EQ(all[2]->body() + all[4]->body(), "/third/fifth");
	EXPECT_EQ(busy.connections(), 4u);

	for (int number = 0; number < 3; ++number)
	{
		make(silent.url()).start();
	}
	restart(); // completes what runs and what waits, or the end of the test finds it
}
