#include "ModuleFixture.h"
#include "NginxServer.h"
#include "NoThreads.h"
#include "TempDir.h"

#include <cstdlib>
#include <set>

/** Against an ordinary server, as scripts meet it. */
class Nginx : public ModuleFixture
{
protected:
	TempDir dir;
	NginxServer server{{dir.path(), ""}};
};

TEST_F(Nginx, AnswersArriveWhenTheSystemHasNoThreadToGive)
{
	const std::string content(1 << 20, 'c');
	dir.write("file.bin", content);
	const FString url = text(server.url("/file.bin"));
	TArray<FhttpRequest> requests;
	FString id;
	UCorvaneBPLibrary::CreateHttpRequestGETDownload(get(server.url("/file.bin")), url, {}, EHTTPCorvFileDownloadResumeType::E_OVERWRITE,
		EHTTPCorvFileUpload::E_ad, text(dir.path("copy")), "file", requests, id);
	{
		const NoThreads limit;
		execute(requests);
		drain();
	}
	ASSERT_EQ(completions.size(), 2u);
	EXPECT_TRUE(completions[0].dataString == content && completions[1].dataString == content);
	EXPECT_TRUE(dir.read("copy") == content);
}

TEST_F(Nginx, GivesEachOfManyRequestsStartedAtOnceOneCompletion)
{
	const char* wanted = std::getenv("CORVANE_TEST_ROUNDS"); // asks for a longer run
	dir.write("small", "hello");
	for (int round = wanted ? std::stoi(wanted) : 2; round > 0; --round)
	{
		completions.clear();
		TArray<FhttpRequest> requests;
		std::multiset<std::string> expected, seen;
		for (int number = 0; number < 500; ++number)
		{
			const std::string id = std::to_string(number);
			requests.Append(get(server.url("/small"), {}, id.c_str()));
			expected.insert(id + " hello");
		}
		execute(requests);
		drain();
		for (const Completion& completion : completions)
		{
			seen.insert(completion.requestID + " " + completion.byteData);
		}
		ASSERT_EQ(seen, expected);
	}
}
