#include "CorvaneRequestCompleteObject.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::MatchesRegex;

class Builder : public ModuleFixture
{
};

TEST_F(Builder, RefusesAShortUrlInsideTheCall)
{
	LogCapture log;
	for (const char* url : {"", "a", "ab"})
	{
		completions.clear();
		TArray<FhttpRequest> requests = get("http://kept");
		FString id = "old";
		EXPECT_EQ(UCorvaneBPLibrary::CreateHttpRequestGET({}, url, {}, "given", false, requests, id), 400);
		ASSERT_EQ(completions.size(), 1u) << "the event comes before the builder returns";
		EXPECT_EQ(completions[0].statusCode, 400);
		EXPECT_EQ(completions[0].requestID, "given");
		EXPECT_EQ(completions[0].dataString, "");
		EXPECT_TRUE(completions[0].dataArray.empty() && completions[0].header.empty() && completions[0].byteData.empty());
		EXPECT_EQ(utf8(id), "given");
		EXPECT_EQ(requests.Num(), 1) << "left as it was";
	}
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Cancel Request : URL to short."), 3);
	EXPECT_EQ(get("abc").Num(), 1);
}

TEST_F(Builder, MakesAnIdWhenNoneIsGiven)
{
	TArray<FhttpRequest> requests;
	FString first, second;
	UCorvaneBPLibrary::CreateHttpRequestGET({}, "http://a", {}, "", false, requests, first);
	UCorvaneBPLibrary::CreateHttpRequestGET({}, "http://a", {}, "", false, requests, second);
	EXPECT_THAT(utf8(first), MatchesRegex("[0-9A-F]{32}"));
	EXPECT_NE(utf8(first), utf8(second));
	EXPECT_EQ(requests[0].requestCompleteObject()->getRequestID(), second);
}

TEST_F(Builder, ChainsRecordsInCallOrder)
{
	TArray<FhttpRequest> requests;
	FString id;
	UCorvaneBPLibrary::CreateHttpRequestGET({}, "http://first", {{"A", "1"}}, "", false, requests, id);
	UCorvaneBPLibrary::CreateHttpRequestGET(requests, "http://second", {}, "", true, requests, id);
	ASSERT_EQ(requests.Num(), 2);
	EXPECT_EQ(utf8(requests[0].url), "http://first");
	EXPECT_EQ(utf8(requests[0].header.FindRef("a")), "1");
	EXPECT_FALSE(requests[0].bindServerSendEvent);
	EXPECT_EQ(utf8(requests[1].url), "http://second");
	EXPECT_TRUE(requests[1].bindServerSendEvent);
}

TEST_F(Builder, CopiesOfARecordShareTheirCompletionObjectOnly)
{
	TArray<FhttpRequest> requests = get("http://a", {{"A", "1"}});
	FhttpRequest copy = requests[0];
	copy.header.Add("A", "2");
	EXPECT_EQ(utf8(requests[0].header.FindRef("A")), "1");
	EXPECT_EQ(copy.requestCompleteObject(), requests[0].requestCompleteObject());
	const FhttpRequest empty;
	EXPECT_EQ(empty.requestCompleteObject(), nullptr);
	EXPECT_EQ(empty.requestType, EHTTPCorvRequestType::GET);
	EXPECT_EQ(empty.directoryType, EHTTPCorvFileUpload::E_gd);
}
