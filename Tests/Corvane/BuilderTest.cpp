#include "Calls.h"
#include "CorvaneRequestCompleteObject.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

#include <gmock/gmock.h>

using Builder = ModuleFixture;

TEST_F(Builder, RefusesAShortUrlInsideTheCall)
{
	LogCapture log;
	for (const char* url : {"", "ab"})
	{
		completions.clear();
		Pins pins{.url = url, .optionalRequestID = "given", .httpRequests = get("abc"), .requestID = "old"};
		call("CreateHttpRequestGET", pins);
		ASSERT_EQ(completions.size(), 1u) << "the event comes before the builder returns";
		EXPECT_EQ(completions[0].brief(), "400 ");
		EXPECT_EQ(completions[0].requestID, "given");
		EXPECT_TRUE(completions[0].dataArray.empty() && completions[0].header.empty() && completions[0].byteData.empty());
		EXPECT_EQ(pins.statusCode, 400);
		EXPECT_EQ(utf8(pins.requestID), "given");
		EXPECT_EQ(pins.httpRequests.Num(), 1) << "left as it was";
	}
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Cancel Request : URL to short."), 2);
}

TEST_F(Builder, ChainsRecordsInCallOrderUnderIdsOfTheirOwn)
{
	Pins first{.url = "http://first", .header = {{"A", "1"}}};
	call("CreateHttpRequestGET", first);
	Pins second{.otherHttpRequests = first.httpRequests, .url = "http://second", .bindServerSendEvent = true};
	call("CreateHttpRequestGET", second);
	const TArray<FhttpRequest>& requests = second.httpRequests;
	ASSERT_EQ(requests.Num(), 2);
	EXPECT_EQ(utf8(requests[0].url + " " + requests[0].header.FindRef("a") + " " + requests[1].url), "http://first 1 http://second");
	EXPECT_TRUE(!requests[0].bindServerSendEvent && requests[1].bindServerSendEvent);
	EXPECT_THAT(utf8(first.requestID), testing::MatchesRegex("[0-9A-F]{32}"));
	EXPECT_NE(first.requestID, second.requestID);
	EXPECT_EQ(requests[1].requestCompleteObject()->getRequestID(), second.requestID);
}
