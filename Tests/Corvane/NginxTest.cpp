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
	NginxServer server{{dir.path(), "location /moved { return 301 /file.bin; }"}};
};

TEST_F(Nginx, ServesFilesRedirectsAndErrors)
{
	std::string content(3 << 20, '\0');
	for (size_t at = 0; at < content.size(); ++at)
	{
		content[at] = static_cast<char>(at * 31 + at / 4099);
	}
	dir.write("file.bin", content);
	dir.write("empty", "");
	EXPECT_TRUE(run(get(server.url("/file.bin"))).byteData == content);
	EXPECT_TRUE(run(get(server.url("/moved"))).byteData == content);
	EXPECT_EQ(run(get(server.url("/empty"))).byteData, "");
	EXPECT_EQ(run(get(server.url("/missing"))).statusCode, 404);
	const Completion part = run(get(server.url("/file.bin"), {{"Range", "bytes=10-19"}}));
	EXPECT_EQ(part.statusCode, 206);
	EXPECT_EQ(part.byteData, content.substr(10, 10));
}

TEST_F(Nginx, AnswersArriveWhenTheSystemHasNoThreadToGive)
{
	const std::string content(1 << 20, 'c');
	dir.write("file.bin", content);
	TArray<FhttpRequest> requests = get(server.url("/file.bin"), {}, "text");
	FString id;
	ASSERT_EQ(
		UCorvaneBPLibrary::CreateHttpRequestGETDownload(requests, text(server.url("/file.bin")), {},
			EHTTPCorvFileDownloadResumeType::E_OVERWRITE, EHTTPCorvFileUpload::E_ad, text(dir.path() + "/copy"), "file", requests, id),
		0);
	const NoThreads limit;
	execute(requests);
	drain();
	ASSERT_EQ(completions.size(), 2u);
	for (const Completion& completion : completions)
	{
		EXPECT_EQ(completion.statusCode, 200);
		EXPECT_TRUE(completion.dataString == content) << completion.requestID;
	}
	EXPECT_TRUE(dir.read("copy") == content);
}

/** Rounds of the test below; the environment variable CORVANE_TEST_ROUNDS asks for a longer run. */
static int rounds()
{
	const char* wanted = std::getenv("CORVANE_TEST_ROUNDS");
	return wanted ? std::stoi(wanted) : 2;
}

TEST_F(Nginx, GivesEachOfManyRequestsStartedAtOnceOneCompletion)
{
	constexpr size_t atOnce = 500;
	dir.write("small", "hello");
	for (int round = 0; round < rounds(); ++round)
	{
		completions.clear();
		TArray<FhttpRequest> requests;
		std::set<std::string> expected;
		for (size_t number = 0; number < atOnce; ++number)
		{
			const std::string id = std::to_string(number);
			requests.Append(get(server.url("/small"), {}, id.c_str()));
			expected.insert(id);
		}
		execute(requests);
		drain();
		std::set<std::string> seen;
		for (const Completion& completion : completions)
		{
			EXPECT_EQ(completion.byteData, "hello");
			seen.insert(completion.requestID);
		}
		ASSERT_EQ(completions.size(), atOnce) << "round " << round;
		ASSERT_EQ(seen, expected) << "round " << round;
	}
}
