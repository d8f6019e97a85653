#include "HttpFixture.h"
#include "RawServer.h"

namespace
{
	/** Requests whose body begins inside the Content-Length header. */
	class BodyInHeader : public HttpTest
	{
	protected:
		Exchange& put(const std::string& url, const std::string& length)
		{
			Exchange& exchange = make(url, "PUT");
			exchange.request().SetHeader("Content-Length", text(length));
			EXPECT_TRUE(exchange.request().SetContentFromStream(MakeShared<BytesArchive>("12345")));
			return exchange;
		}
	};
} // namespace

TEST_F(BodyInHeader, GoesOutWholeWhateverIsAnnouncedFollowsNoRedirectAndCostsItsConnection)
{
	std::string body;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			body = connection.read(11);
			connection.send(answer(307, "", "Location: /elsewhere\r\n"));
			connection.waitForPeer();
		});
	int connections = 0;
	for (const std::string announced : {"11", "3", "2000000000"})
	{
		EXPECT_EQ(run(put(server.url(), announced + "\r\n\r\nab")).code(), 307);
		EXPECT_EQ(server.requests().back(),
			"PUT / HTTP/1.1\r\n" + firstHeaders(server.authority()) + "User-Agent: test\r\nContent-Length: " + announced + "\r\n\r\n");
		EXPECT_EQ(body, "ab\r\n\r\n12345");
		EXPECT_EQ(server.connectionCount(), ++connections);
	}
}

TEST_F(BodyInHeader, OtherLineBreaksInHeadersStayForbidden)
{
	RawServer server(answering([](const std::string&) { return answer(200, ""); }));
	for (const char* length : {"5\r\nX-Evil: 1", "5\n\n", "\r\n\r\n", "x\r\n\r\n", "5 \r\n\r\n", "-5\r\n\r\n", "5\r\r\n\n"})
	{
		EXPECT_FALSE(run(put(server.url(), length)).succeeded()) << length;
	}
	Exchange& other = put(server.url(), "5");
	other.request().SetHeader("X-Length", "5\r\n\r\nGET / HTTP/1.1");
	EXPECT_FALSE(run(other).succeeded());
	for (const char* inMemory : {"x", ""})
	{
		Exchange& bodiless = put(server.url(), "5\r\n\r\nGET / HTTP/1.1");
		bodiless.request().SetContentAsString(inMemory);
		EXPECT_FALSE(run(bodiless).succeeded()) << "the text would be a request of its own";
	}
	EXPECT_EQ(server.connectionCount(), 0);
}
