#include "LogCapture.h"
#include "Misc/CoreDelegates.h"
#include "ModuleFixture.h"
#include "RawServer.h"

class EndOfProgram : public ModuleFixture
{
};

TEST_F(EndOfProgram, CancelsWhatStillRuns)
{
	Gate never;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.waitFor(never);
		});
	TArray<FhttpRequest> requests;
	for (int number = 0; number < 50; ++number)
	{
		requests.Append(get(server.url()));
	}
	execute(requests);
	ASSERT_TRUE(waitFor([&] { return server.connectionCount() == 50; }));
	const auto start = std::chrono::steady_clock::now();
	loop.Shutdown();
	EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4)) << "it need not use up its time limit";
	EXPECT_TRUE(completions.empty()) << "tasks that are left are dropped, but " << completions.front().statusCode << " came";
	EXPECT_EQ(UCorvaneBPLibrary::getCorvaneTarget(), nullptr);
	EXPECT_FALSE(UCorvaneBPLibrary::hasPendingWork());
}

TEST_F(EndOfProgram, EndsRequestsWhileAllObjectsAreThere)
{
	struct Observer
	{
		void look()
		{
			UCorvaneBPLibrary* target = nullptr;
			UCorvaneBPLibrary::executeHttpRequests(late, target);
			hasLibrary = target != nullptr;
			isIdle = !UCorvaneBPLibrary::hasPendingWork();
		}
		TArray<FhttpRequest> late;
		bool hasLibrary = false;
		bool isIdle = false;
	} observer;
	LogCapture log;
	Gate never;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			connection.waitFor(never);
		});
	execute(get(server.url()));
	ASSERT_TRUE(waitFor([&] { return server.connectionCount() == 1; }));
	observer.late = get(server.url());
	FCoreDelegates::OnPreExit.AddRaw(&observer, &Observer::look); // it hears of the end behind the module
	loop.Shutdown();
	FCoreDelegates::OnPreExit.RemoveAll(&observer);
	EXPECT_TRUE(observer.hasLibrary);
	EXPECT_TRUE(observer.isIdle) << "modules are shut down too late for what a request still has to do";
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "The module is shutting down."), 1) << "no new request";
}

TEST_F(EndOfProgram, MayComeAtAnyMomentOfARequest)
{
	RawServer server(answering([](const std::string&) { return answer(200, std::string(100000, 'x')); }));
	for (int moment = 0; moment < 20; ++moment)
	{
		FGameLoopSettings settings;
		loop.Shutdown();
		FGameLoop next(settings);
		TArray<FhttpRequest> requests = get(server.url());
		execute(requests);
		waitFor([&] { return server.connectionCount() > moment; });
		next.WaitFor([] { return false; }, 0.0005 * moment);
	}
}

TEST_F(EndOfProgram, RefusesRequestsWithoutALibrary)
{
	LogCapture log;
	TArray<FhttpRequest> requests = get("http://127.0.0.1/");
	loop.Shutdown();
	UCorvaneBPLibrary* target = UCorvaneBPLibrary::corv;
	UCorvaneBPLibrary::executeHttpRequests(requests, target);
	EXPECT_EQ(target, nullptr);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "executeHttpRequests"), 1);
}

TEST_F(EndOfProgram, SkipsRecordsOfAnEarlierOne)
{
	LogCapture log;
	const TArray<FhttpRequest> before = get("http://127.0.0.1:1/");
	loop.Shutdown();
	const TArray<FhttpRequest> between = get("http://127.0.0.1:1/");
	FGameLoop next;
	execute(before);
	execute(between);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "UCorvaneBPLibrary: Missing Object instance (153)."), 2);
	EXPECT_FALSE(UCorvaneBPLibrary::hasPendingWork());
}
