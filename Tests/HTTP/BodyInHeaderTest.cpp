#include "HttpFixture.h"

namespace
{
	/** Requests whose body begins inside the Content-Length header. */
	class BodyInHeader : public HttpTest
	{
	protected:
		Exchange& put(const std::string& url, const std::string& length, const std::string& stream)
		{
			Exchange& exchange = make(url, "PUT");
			exchange.request().SetHeader("Content-Type", "x/y");
			exchange.request().SetHeader("X-Later", "1");
			exchange.request().SetHeader("Content-Length", text(length));
			EXPECT_TRUE(exchange.request().SetContentFromStream(MakeShared<BytesArchive>(stream)));
			return exchange;
		}
	};

	/** Reads requests with bodies of that many bytes, keeps all bytes, and answers. */
	struct Reader
	{
		const size_t bodyBytes;
		const int code = 200;
		std::string bytes = {}; // to be read behind the answer
		RawServer server{[this](Connection& connection)
			{
				bytes = connection.readHead();
				bytes += connection.read(bodyBytes);
				connection.send(answer(code, "", "Location: /elsewhere\r\n"));
				connection.waitForPeer();
			}};
	};

	std::string wire(const RawServer& server, const std::string& length, const std::string& body)
	{
		return "PUT / HTTP/1.1\r\n" + firstHeaders(server.authority()) +
			   "User-Agent: test\r\nContent-Type: x/y\r\nX-Later: 1\r\nContent-Length: " + length + "\r\n\r\n" + body;
	}
} // namespace

TEST_F(BodyInHeader, GoesOutAsItIsAndTheStreamFollows)
{
	const std::string large(300000, 'z');
	struct Case
	{
		std::string head, file;
	};
	for (const Case& c : {Case{"--b\r\nname: ü", "12345"}, {"", "1"}, {std::string(200000, 'h'), large}})
	{
		const std::string body = c.head + "\r\n\r\n" + c.file;
		const std::string length = std::to_string(body.size());
		Reader reader{body.size()};
		Exchange& exchange = put(reader.server.url(), length + "\r\n\r\n" + c.head, c.file);
		EXPECT_TRUE(run(exchange).succeeded());
		EXPECT_TRUE(reader.bytes == wire(reader.server, length, body)) << reader.bytes.substr(0, 300);
		EXPECT_EQ(exchange.progress().back().sent, c.file.size());
	}
}

TEST_F(BodyInHeader, IsSentWholeWhateverNumberIsAnnounced)
{
	for (const char* announced : {"3", "10", "2000000000"})
	{
		Reader reader{10};
		EXPECT_TRUE(run(put(reader.server.url(), std::string(announced) + "\r\n\r\nab", "1234")).succeeded());
		EXPECT_EQ(reader.bytes, wire(reader.server, announced, "ab\r\n\r\n1234"));
	}
}

TEST_F(BodyInHeader, FollowsNoRedirectAndCostsItsConnection)
{
	for (const int code : {301, 307, 308})
	{
		Reader reader{9, code};
		for (int round = 1; round <= 2; ++round)
		{
			EXPECT_EQ(run(put(reader.server.url(), "9\r\n\r\n", "12345")).code(), code);
			EXPECT_EQ(reader.server.connectionCount(), round);
		}
		for (const std::string& head : reader.server.requests())
		{
			EXPECT_EQ(targetOf(head), "/");
		}
	}
}

TEST_F(BodyInHeader, OtherLineBreaksInHeadersStayForbidden)
{
	RawServer server(answering([](const std::string&) { return answer(200, ""); }));
	for (const char* length : {"5\r\nX-Evil: 1", "5\n\n", "\r\n\r\n", "x\r\n\r\n", "5 \r\n\r\n", "-5\r\n\r\n", "5\r\r\n\n"})
	{
		EXPECT_FALSE(run(put(server.url(), length, "12345")).succeeded()) << length;
	}
	Exchange& other = put(server.url(), "5", "12345");
	other.request().SetHeader("X-Length", "5\r\n\r\nGET / HTTP/1.1");
	EXPECT_FALSE(run(other).succeeded());
	for (const bool inMemory : {true, false})
	{
		Exchange& bodiless = make(server.url(), "PUT");
		bodiless.request().SetHeader("Content-Length", "5\r\n\r\nGET / HTTP/1.1");
		bodiless.request().SetContentAsString(inMemory ? "x" : "");
		EXPECT_FALSE(run(bodiless).succeeded()) << "the text would be a request of its own";
	}
	EXPECT_EQ(server.connectionCount(), 0);
}
