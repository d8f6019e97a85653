#include "ModuleFixture.h"
#include "NginxServer.h"
#include "TempDir.h"

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

TEST_F(Nginx, TakesManyRequestsAtOnce)
{
	dir.write("small", "hello");
	TArray<FhttpRequest> requests;
	for (int number = 0; number < 300; ++number)
	{
		requests.Append(get(server.url("/small")));
	}
	execute(requests);
	drain();
	ASSERT_EQ(completions.size(), 300u);
	for (const Completion& completion : completions)
	{
		EXPECT_EQ(completion.byteData, "hello");
	}
}
