#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"

using EngineVerbs = ModuleFixture;

TEST_F(EngineVerbs, ThatWouldEndTheProcessAreRefused)
{
	LogCapture log;
	RawServer server(answering([](const std::string&) { return answer(200, ""); }));
	for (const char* verb : {"TRACE", "Options", "CONNECT", "PATCH", "DELETE"})
	{
		TArray<FhttpRequest> requests;
		FString id;
		UCorvaneBPLibrary::CreateHttpRequestIndividual({}, text(server.url()), {{"Content-Type", "x"}}, verb,
			EHTTPCorvIndividualType::STRING, "", "", requests, id, false, false, false, false);
		const bool bSent = *verb == 'P' || *verb == 'D';
		EXPECT_EQ(run(requests).statusCode, bSent ? 200 : 400) << verb;
	}
	EXPECT_EQ(server.requests().size(), 2u);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "cannot send OPTIONS requests"), 1);
}
