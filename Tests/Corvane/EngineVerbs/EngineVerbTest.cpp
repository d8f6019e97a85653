#include "Lab/Origin.h"
#include "LogCapture.h"
#include "ModuleFixture.h"

using EngineVerbs = ModuleFixture;

TEST_F(EngineVerbs, ThatWouldEndTheProcessAreRefused)
{
	LogCapture log;
	Lab::Origin server;
	server.at("/", "");
	for (const char* verb : {"TRACE", "Options", "CONNECT", "PATCH", "DELETE"})
	{
		TArray<FhttpRequest> requests;
		FString id;
		UCorvaneBPLibrary::CreateHttpRequestIndividual({}, text(server.url()), {{"Content-Type", "x"}}, verb,
			EHTTPCorvIndividualType::STRING, "", "", requests, id, false, false, false, false);
		const bool bSent = *verb == 'P' || *verb == 'D';
		EXPECT_EQ(run(requests).statusCode, bSent ? 200 : 400) << verb;
	}
	EXPECT_EQ(server.requests(), 2u);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "cannot send OPTIONS requests"), 1);
}
