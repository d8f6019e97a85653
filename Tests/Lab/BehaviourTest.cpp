#include "Client.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Origin.h"
#include "Lab/Script/Script.h"

#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace
{
	const std::string digits = "lab.file{ bytes = '0123456789' ";
	const std::string tagged = "If-Range: " + Lab::entityTag(*Lab::bytesContent("0123456789"));

	/** A description of an origin, and what a client gets of it at last. */
	struct Row
	{
		std::string behaviours; // of "/x"
		Ask ask;
		CURLcode error = CURLE_OK;
		long status = 200;
		std::string body; // as a whole
		std::string headers = ""; // a part of them
		int requests = 1; // the last one counts
	};

	const Row rows[] = {
		{"'plain'", {}, CURLE_OK, 200, "plain", "Content-Length: 5\r\n"},
		{"'plain'", {.method = "HEAD"}, CURLE_OK, 200, "", "Content-Length: 5\r\n"},
		{digits + "}", {}, CURLE_OK, 200, "0123456789", "Last-Modified: Thu, 01 Jan 2026"},
		{digits + "}", {{"Range: bytes=2-4"}}, CURLE_OK, 206, "234", "Content-Range: bytes 2-4/10\r\n"},
		{digits + "}", {{"Range: bytes=8-"}}, CURLE_OK, 206, "89", "bytes 8-9/10"},
		{digits + "}", {{"Range: bytes=-3"}}, CURLE_OK, 206, "789", "bytes 7-9/10"},
		{digits + "}", {{"Range: bytes=10-"}}, CURLE_OK, 416, "There is no such part.\n", "Content-Range: bytes */10\r\n"},
		{digits + "}", {{"Range: bytes=4-2"}}, CURLE_OK, 416, "There is no such part.\n"},
		{digits + "}", {{"Range: pages=1-2"}}, CURLE_OK, 200, "0123456789"},
		{digits + "}", {{"Range: bytes=8-", tagged}}, CURLE_OK, 206, "89"},
		{digits + "}", {{"Range: bytes=8-", "If-Range: \"old\""}}, CURLE_OK, 200, "0123456789"},
		{digits + ", validator = 'weak' }", {{"Range: bytes=8-", "If-Range: W/" + tagged.substr(10)}}, CURLE_OK, 200, "0123456789",
			"ETag: W/\""},
		{digits + "}", {{"Range: bytes=8-", "If-Range: Thu, 01 Jan 2026 08:00:00 GMT"}}, CURLE_OK, 206, "89"},
		{digits + ", ifRange = false }", {{"Range: bytes=8-", "If-Range: \"old\""}}, CURLE_OK, 206, "89"},
		{digits + "}", {{"If-None-Match: " + tagged.substr(10)}}, CURLE_OK, 304, ""},
		{digits + ", ranges = 'ignored' }", {{"Range: bytes=8-"}}, CURLE_OK, 200, "0123456789", "Accept-Ranges: none"},
		{digits + ", ranges = 'wrongStart' }", {{"Range: bytes=2-4"}}, CURLE_OK, 206, "34", "bytes 3-4/10"},
		{digits + ", ranges = 'wrongBytes' }", {{"Range: bytes=2-4"}}, CURLE_OK, 206, "123", "bytes 2-4/10"},
		{digits + ", ranges = 'wrongTotal' }", {{"Range: bytes=2-4"}}, CURLE_OK, 206, "234", "bytes 2-4/11"},
		{digits + ", ranges = 'noTotal' }", {{"Range: bytes=2-4"}}, CURLE_OK, 206, "234", "bytes 2-4/*"},
		{digits + ", ranges = 'otherValidator' }", {{"Range: bytes=2-4"}}, CURLE_OK, 206, "234", "ETag: \"another-file\""},
		{digits + ", ranges = 'refused' }", {{"Range: bytes=2-4"}}, CURLE_OK, 416, "There is no such part.\n", "bytes */10"},
		{digits + ", changesAt = 2, newBytes = 'new' }", {}, CURLE_OK, 200, "0123456789"},
		{digits + ", changesAt = 2, newBytes = 'new' }", {}, CURLE_OK, 200, "new", "Fri, 02 Jan 2026", 2},
		{digits + ", changesAtByte = 4, newBytes = 'abc' }", {}, CURLE_OK, 200, "0123bcabca"},
		{digits + ", changesAtByte = 4, newBytes = 'abc' }", {}, CURLE_OK, 200, "abc", "", 2},
		{digits + "}, lab.drop{ after = 4 }", {}, CURLE_PARTIAL_FILE, 200, "0123"},
		{digits + "}, lab.drop{ after = '70%' }", {}, CURLE_PARTIAL_FILE, 200, "0123456"},
		{digits + "}, lab.drop{ after = 99 }", {}, CURLE_OK, 200, "0123456789"},
		{digits + "}, lab.drop()", {}, CURLE_GOT_NOTHING, 0, ""},
		{digits + "}, lab.drop{ resets = true }", {}, CURLE_RECV_ERROR, 0, ""},
		{digits + "}, lab.drop{ after = 4, requests = 2 }", {}, CURLE_PARTIAL_FILE, 200, "0123", "", 2},
		{digits + "}, lab.drop{ after = 4, requests = 2 }", {}, CURLE_OK, 200, "0123456789", "", 3},
		{digits + "}, lab.drop{ after = 4, chance = 0 }", {}, CURLE_OK, 200, "0123456789"},
		{digits + "}, lab.drop{ after = 4, chance = 1 }", {}, CURLE_PARTIAL_FILE, 200, "0123"},
		{digits + "}, lab.inTurn{ lab.drop{ after = 4 }, lab.status{ code = 503, retryAfter = 7, text = 'busy' }, {} }", {}, CURLE_OK, 503,
			"busy", "Retry-After: 7\r\n", 2},
		{digits + "}, lab.inTurn{ lab.drop{ after = 4 }, {} }", {}, CURLE_OK, 200, "0123456789", "", 5},
		{digits + "}, lab.stall{ after = 5, milliseconds = 30 }", {}, CURLE_OK, 200, "0123456789"},
		{digits + "}, lab.rate{ bytes = 100 }", {}, CURLE_OK, 200, "0123456789"},
		{digits + "}, lab.pieces{ sizes = { 1, 4 }, pause = 10 }", {}, CURLE_OK, 200, "0123456789"},
		{"'short', lab.length{ says = 9 }", {}, CURLE_PARTIAL_FILE, 200, "short"},
		{"'longer', lab.length{ says = 4 }", {}, CURLE_OK, 200, "long"},
		{"'open', lab.length{ missing = true }", {}, CURLE_OK, 200, "open", "Connection: close"},
		{digits + "}, lab.chunked{ size = 3 }", {}, CURLE_OK, 200, "0123456789", "Transfer-Encoding: chunked"},
		{digits + "}, lab.chunked{ size = 3, fault = 'noEnd' }", {}, CURLE_PARTIAL_FILE, 200, "0123456789"},
		{digits + "}, lab.chunked{ size = 3 }, lab.drop{ after = 5 }", {}, CURLE_PARTIAL_FILE, 200, "01234"},
		{"string.rep('a', 999), lab.gzip()", {.unpacks = true}, CURLE_OK, 200, std::string(999, 'a'), "Content-Encoding: gzip"},
		{"'aaaa', lab.gzip()", {}, CURLE_OK, 200, "aaaa"},
		{"string.rep('ab', 999), lab.gzip{ broken = true }", {.unpacks = true}, CURLE_BAD_CONTENT_ENCODING, 200, ""},
		{"lab.redirect{ to = '/end', hops = 4 }", {.follows = true}, CURLE_OK, 200, "the end"},
		{"lab.redirect{ to = '/end', host = 'localhost' }", {}, CURLE_OK, 302, "", "Location: //localhost:"},
		{"lab.redirect{ loops = true, code = 307 }", {.follows = true}, CURLE_TOO_MANY_REDIRECTS, 307, ""},
		{"lab.events{ list = { 'a', { event = 'e', data = 'b\\nc' } }, ids = true, retry = 5 }", {}, CURLE_OK, 200,
			"retry: 5\nid: 1\ndata: a\n\nid: 2\nevent: e\ndata: b\ndata: c\n\n", "text/event-stream"},
		{"lab.events{ number = 5, ids = true, cutsAfter = 2 }", {{"Last-Event-ID: 1"}}, CURLE_OK, 200,
			"id: 2\ndata: message 2\n\nid: 3\ndata: message 3\n\n"},
		{"lab.echo()", {.body = "sent"}, CURLE_OK, 200, "sent", "application/x-www-form-urlencoded"},
		{"lab.echo()", {{"Transfer-Encoding: chunked"}, "PUT", "in chunks"}, CURLE_OK, 200, "in chunks"},
		{"lab.upload{ bytesPerSecond = 20000 }", {.body = std::string(2000, 'x')}, CURLE_OK, 200, "2000"},
		{"lab.upload{ refusesAfter = 10, code = 429 }", {.body = std::string(1 << 20, 'x')}, CURLE_OK, 429, "10"},
		{"lab.upload{ hangsUpAfter = 10 }", {.body = std::string(100, 'x')}, CURLE_RECV_ERROR, 0, ""},
		{"lab.upload{ throwsAway = true }", {.body = std::string(1 << 22, 'x')}, CURLE_OK, 200, "4194304"},
		{"lab.headers{ Server = 'old', ['X-A'] = 1 }", {}, CURLE_OK, 200, "", "X-A: 1\r\n"},
		{"'old', lab.http10()", {}, CURLE_OK, 200, "old", "HTTP/1.0 200 OK\r\n"},
		{"lab.raw{ 'HTTP/1.1 299 Own words\\r\\n', 20, 'Content-Length: 3\\r\\n\\r\\nraw' }", {}, CURLE_OK, 299, "raw"},
		{"function(r) return { 'visit ' .. r.visit .. r.query.q .. r.headers['x-a'], lab.status{ code = 202 } } end", {{"X-A: y"}},
			CURLE_OK, 202, "visit 2?y", "", 2},
	};

	const std::string form =
		"--B\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\none\r\n"
		"--B\r\ncontent-disposition: form-data; name=\"f\"; filename=\"x.txt\"\r\nContent-Type: text/css\r\n\r\n\r\n--\r\n--B--\r\n";
} // namespace

TEST(Behaviour, IsWhatAClientGets)
{
	for (const Row& row : rows)
	{
		Lab::Origin origin;
		Lab::Script script(origin);
		script.runText("lab.at('/end', 'the end') lab.at('/x', " + row.behaviours + ")");
		const std::string url = origin.url(row.behaviours.starts_with("function") ? "/x?q=%3F" : "/x");
		for (int request = 1; request < row.requests; ++request)
		{
			ask(url, row.ask);
		}
		const Got got = ask(url, row.ask);
		EXPECT_EQ(got.error == CURLE_SEND_ERROR ? CURLE_RECV_ERROR : got.error, row.error)
			<< row.behaviours << curl_easy_strerror(got.error);
		EXPECT_EQ(got.status, row.status) << row.behaviours;
		EXPECT_TRUE(got.body == row.body) << row.behaviours << "\n" << got.body.substr(0, 200);
		EXPECT_THAT(got.head, HasSubstr(row.headers)) << row.behaviours;
	}
}

/** Only the bytes tell what an ordinary client hides. */
TEST(Behaviour, IsTheseBytes)
{
	Lab::Origin origin;
	Lab::Script(origin).runText(R"lua(
		lab.at("/chunks", "abcdef", lab.chunked{ size = 2 })
		lab.at("/size", "abcdef", lab.chunked{ size = 3, fault = "badSize" })
		lab.at("/line", "abcdef", lab.chunked{ size = 3, fault = "noLineEnd" })
		lab.at("/reset", "abcdef", lab.drop{ after = 2, resets = true })
		lab.at("/headers", lab.endlessHeaders(), lab.drop{ after = 60 })
		lab.at("POST /form", lab.form())
	)lua");
	const std::string chunkedHead = "HTTP/1.1 200 OK\r\nContent-Type: text/plain; charset=utf-8\r\nTransfer-Encoding: chunked\r\n";
	const auto get = [&](const std::string& path)
	{ return converse(origin.port(), "GET " + path + " HTTP/1.1\r\nConnection: close\r\n\r\n"); };
	const std::string closing = "Connection: close\r\n\r\n";
	EXPECT_EQ(get("/chunks"), chunkedHead + closing + "2\r\nab\r\n2\r\ncd\r\n2\r\nef\r\n0\r\n\r\n");
	EXPECT_EQ(get("/size"), chunkedHead + closing + "3\r\nabc\r\nx3\r\ndef\r\n0\r\n\r\n");
	EXPECT_EQ(get("/line"), chunkedHead + closing + "3\r\nabc3\r\ndef\r\n0\r\n\r\n");
	EXPECT_EQ(get("/headers"), "HTTP/1.1 200 OK\r\nConnection: close\r\nX-More: and more, and more, and more, and more\r\nX-More: and ");
	EXPECT_THAT(get("/reset"), ::testing::EndsWith("reset"));
	EXPECT_THAT(get("/form"), HasSubstr("404 Not Found"));
	EXPECT_THAT(converse(origin.port(), "no request\r\n\r\n"), HasSubstr("400 Bad Request"));
	// Two requests in one write, the second one in old style; each has its answer.
	const std::string both = converse(origin.port(), "GET /chunks HTTP/1.1\r\n\r\nGET /chunks HTTP/1.0\r\n\r\n");
	EXPECT_THAT(both, HasSubstr("0\r\n\r\nHTTP/1.1 200 OK"));
	EXPECT_THAT(both, ::testing::EndsWith("\r\n\r\nabcdef"));
	EXPECT_EQ(ask(origin.url("/form"), {{"Content-Type: multipart/form-data; boundary=B"}, "", form}).body, R"([
  {
    "name": "a",
    "value": "one"
  },
  {
    "name": "f",
    "fileName": "x.txt",
    "type": "text/css",
    "bytes": 4,
    "md5": "4122e8ba1f11f86f9dc4453465ec8f82"
  }
]
)");
}

TEST(Behaviour, TakesItsTime)
{
	Lab::Origin origin;
	Lab::Script(origin).runText(R"lua(
		lab.at("/rate", lab.file{ size = 2000 }, lab.rate{ bytes = 20000 })
		lab.at("/pieces", "abcd", lab.pieces{ sizes = { 1 }, pause = 30 })
		lab.at("/late", "abcd", lab.stall{ milliseconds = 80 })
		lab.at("/events", lab.events{ number = 3, pause = 40 })
		lab.at("/upload", lab.upload{ bytesPerSecond = 100000, waits = 40 })
	)lua");
	for (const char* const path : {"/rate", "/pieces", "/late", "/events"})
	{
		EXPECT_GE(ask(origin.url(path)).seconds, 0.079) << path;
	}
	EXPECT_GE(ask(origin.url("/upload"), {.body = std::string(5000, 'x')}).seconds, 0.079);
}

TEST(Behaviour, DropsAtEachByte)
{
	Lab::Origin origin;
	const std::string bytes = "the whole of a small file";
	for (std::size_t size = 0; size < bytes.size(); ++size)
	{
		origin.at("/" + std::to_string(size), Lab::file(bytes), Lab::inTurn({Lab::dropAfter(size), Lab::Behaviour("the rest")}));
		const std::string url = origin.url("/" + std::to_string(size));
		const Got first = ask(url);
		EXPECT_EQ(first.body, bytes.substr(0, size));
		EXPECT_EQ(first.error, CURLE_PARTIAL_FILE);
		EXPECT_EQ(ask(url).body, "the rest");
	}
}
