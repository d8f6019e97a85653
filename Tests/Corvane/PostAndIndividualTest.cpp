#include "LogCapture.h"
#include "ModuleFixture.h"
#include "RawServer.h"
#include "TempDir.h"
#include "UAsyncNodeCorv.h"
#include "UObject/UObjectGlobals.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace
{
	/** Reads bodies of the announced length; the body comes back as the answer. */
	RawServer::Script echo()
	{
		return [](Connection& connection)
		{
			for (;;)
			{
				const std::string head = connection.readHead();
				const size_t at = head.find("Content-Length: ");
				const std::string body = connection.read(at == head.npos ? 0 : std::stoul(head.substr(at + 16)));
				connection.send(answer(200, body));
			}
		};
	}

	struct Individual
	{
		std::string url;
		TMap<FString, FString> header{{"Content-Type", "text/plain"}};
		const char* verb = "PATCH";
		EHTTPCorvIndividualType type = EHTTPCorvIndividualType::STRING;
		std::string content = "body";
		bool addContentLength = false;
		bool download = false;
		bool upload = false;
		bool events = false;
	};

	class PostAndIndividual : public ModuleFixture
	{
	protected:
		TArray<FhttpRequest> post(const TMap<FString, FString>& fields, const Headers& header = {})
		{
			TArray<FhttpRequest> requests;
			FString id;
			EXPECT_EQ(UCorvaneBPLibrary::CreateHttpRequestPOST({}, text(server.url()), header, fields, "", false, requests, id), 0);
			return requests;
		}

		TArray<FhttpRequest> build(const Individual& given, FString id = FString())
		{
			TArray<FhttpRequest> requests;
			UCorvaneBPLibrary::CreateHttpRequestIndividual({}, text(given.url), given.header, given.verb, given.type, text(given.content),
				"", requests, id, given.addContentLength, given.download, given.upload, given.events);
			return requests;
		}

		/** @return the header lines behind the fixed ones. */
		std::string ownHeaders() const
		{
			const std::string head = server.requests().back();
			const size_t agent = head.find("User-Agent: ");
			return head.substr(head.find("\r\n", agent) + 2);
		}

		RawServer server{echo()};
		TempDir dir;
	};
} // namespace

TEST_F(PostAndIndividual, PostGoesOverTheWireAsDescribed)
{
	const Completion result = run(post({{"a", "1"}, {"b", "x y"}, {u"ü", "&="}}, {{"X-Own", "yes"}}));
	EXPECT_EQ(result.dataString, "a=1&b=x y&ü=&=");
	EXPECT_EQ(server.requests().back().substr(0, 17), "POST / HTTP/1.1\r\n");
	EXPECT_EQ(ownHeaders(), "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 15\r\nX-Own: yes\r\n\r\n");
}

TEST_F(PostAndIndividual, PostWithoutFieldsSendsAnEmptyBody)
{
	EXPECT_EQ(run(post({})).statusCode, 200);
	EXPECT_THAT(ownHeaders(), HasSubstr("Content-Length: 0\r\n"));
}

TEST_F(PostAndIndividual, PersistentHeadersGoIntoEveryRequestUntilRemoved)
{
	LogCapture log;
	UCorvaneBPLibrary::addPersistentHTTPRequestHeader("X-All", "1");
	UCorvaneBPLibrary::addPersistentHTTPRequestHeader("user-agent", "persistent");
	UCorvaneBPLibrary::addPersistentHTTPRequestHeader("content-length", "99"); // must not break a POST
	UCorvaneBPLibrary::addPersistentHTTPRequestHeader("", "x");
	UCorvaneBPLibrary::addPersistentHTTPRequestHeader("X-Empty", "");
	run(post({{"a", "1"}}, {{"x-ALL", "2"}}));
	EXPECT_THAT(server.requests().back(), HasSubstr("user-agent: persistent\r\n"));
	EXPECT_THAT(server.requests().back(), HasSubstr("\r\nContent-Length: 3\r\nx-ALL: 2\r\n\r\n"));

	UCorvaneBPLibrary::removePersistentHTTPRequestHeader("x-all");
	UCorvaneBPLibrary::removePersistentHTTPRequestHeader("never added");
	UCorvaneBPLibrary::removePersistentHTTPRequestHeader("Content-Length");
	UCorvaneBPLibrary::removePersistentHTTPRequestHeader("");
	run(get(server.url()));
	EXPECT_EQ(server.requests().back().find("X-All"), std::string::npos);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "UCorvaneBPLibrary (addPersistentHTTPRequestHeader): Id not set."), 1);
	EXPECT_EQ(
		log.count("LogTemp", ELogVerbosity::Error, "UCorvaneBPLibrary (addPersistentHTTPRequestHeader): Value not set. id=X-Empty"), 1);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "UCorvaneBPLibrary (removePersistentHTTPRequestHeader): Id not set."), 1);
}

TEST_F(PostAndIndividual, IndividualSendsWhatItIsTold)
{
	const Completion result = run(build({server.url(), {{"content-TYPE", "text/x"}, {"X-A", "1"}}, "patch"}));
	EXPECT_EQ(result.dataString, "body");
	EXPECT_EQ(server.requests().back().substr(0, 18), "PATCH / HTTP/1.1\r\n");
	EXPECT_EQ(ownHeaders(), "content-TYPE: text/x\r\nX-A: 1\r\nContent-Length: 4\r\n\r\n");
}

TEST_F(PostAndIndividual, IndividualKnowsTheNineVerbs)
{
	LogCapture log;
	for (const char* verb : {"get", "HEAD", "Post", "PUT", "DELETE", "TRACE", "OPTIONS", "CONNECT", "PATCH"})
	{
		EXPECT_EQ(build({server.url(), {{"Content-Type", "x"}}, verb}).Num(), 1) << verb;
	}
	for (const char* verb : {"", "FETCH", "GE", "GET "})
	{
		EXPECT_EQ(build({server.url(), {{"Content-Type", "x"}}, verb}).Num(), 0) << verb;
	}
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error,
				  "Cancel Request : Wrong verb. Possible values:GET,HEAD,POST,PUT,DELETE,TRACE,OPTIONS,CONNECT,PATCH"),
		4);
	drain();
}

TEST_F(PostAndIndividual, IndividualAddsTheLengthOfItsText)
{
	LogCapture log;
	Individual given{server.url()};
	given.addContentLength = true;
	given.header.Add("content-length", "77");
	given.content = "é";
	EXPECT_EQ(utf8(build(given)[0].header.FindRef("Content-Length")), "2");
	given.type = EHTTPCorvIndividualType::STREAM;
	given.content = "/a/path";
	EXPECT_EQ(utf8(build(given)[0].header.FindRef("Content-Length")), "7") << "of the path, as it always was";
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "Content-Length header has the length of the path"), 1);
	EXPECT_EQ(log.lines().size(), 1u);
	given.verb = "GET";
	given.content = "";
	build(given);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning,
				  "Corv Plugin: Setting a Content-Length header for a GET request can lead to an error on the server. "),
		1);
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning,
				  "Corv Plugin: Setting a Content-Length header with the value 0 can lead to an error on the server. "),
		1);
}

TEST_F(PostAndIndividual, IndividualRefusalsComeOneTaskLater)
{
	LogCapture log;
	const Individual refused[] = {
		{server.url(), {}}, {server.url(), {{"Accept", "x"}}}, {"ab"}, {server.url(), {{"Content-Type", "x"}}, "FETCH"}};
	for (const Individual& given : refused)
	{
		completions.clear();
		EXPECT_EQ(build(given, "id before").Num(), 0);
		EXPECT_TRUE(completions.empty()) << "never inside the call";
		loop.Tick();
		ASSERT_EQ(completions.size(), 1u);
		EXPECT_EQ(completions[0].statusCode, 400);
		EXPECT_EQ(completions[0].requestID, "id before");
	}
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Error, "Cancel Request : "), 4);
}

TEST_F(PostAndIndividual, AFileIsTheBody)
{
	Individual given{server.url()};
	given.type = EHTTPCorvIndividualType::STREAM;
	given.content = dir.write("body.bin", std::string("\0\xFF bytes", 8));
	EXPECT_EQ(run(build(given)).byteData, std::string("\0\xFF bytes", 8));
}

TEST_F(PostAndIndividual, AFileThatCannotBeReadIsRefusedAndNothingIsSent)
{
	LogCapture log;
	for (const std::string& path : {dir.path("missing"), dir.path(), std::string()})
	{
		Individual given{server.url()};
		given.type = EHTTPCorvIndividualType::STREAM;
		given.content = path;
		EXPECT_EQ(run(build(given)).statusCode, 400) << path;
		loop.CollectGarbage();
	}
	EXPECT_EQ(server.connectionCount(), 0);
}

TEST_F(PostAndIndividual, OneKindOfProgressWins)
{
	struct Case
	{
		bool download, upload, events;
		bool seesDownload, seesUpload, seesEvents;
	};
	for (const Case& c : {Case{true, false, false, true, false, false}, {true, true, false, false, true, false},
			 {true, true, true, false, false, true}, {false, false, false, false, false, false}})
	{
		downloads.clear();
		uploads.clear();
		serverSendEvents.clear();
		Individual given{server.url()};
		given.content = std::string(100000, 'z');
		given.download = c.download;
		given.upload = c.upload;
		given.events = c.events;
		EXPECT_EQ(run(build(given)).byteData.size(), 100000u);
		EXPECT_EQ(!downloads.empty(), c.seesDownload);
		EXPECT_EQ(!uploads.empty(), c.seesUpload);
		EXPECT_EQ(!serverSendEvents.empty(), c.seesEvents);
		if (c.seesUpload)
		{
			EXPECT_FLOAT_EQ(uploads.back().size, 100000.0f);
			EXPECT_EQ(uploads.back().bytesSent, 100000);
			EXPECT_FLOAT_EQ(uploads.back().percentUpload, 100.0f);
		}
	}
}

TEST_F(PostAndIndividual, ConversionsKeepTheirOddities)
{
	EXPECT_EQ(utf8(UCorvaneBPLibrary::Int64ToFString(0)), "0");
	EXPECT_EQ(utf8(UCorvaneBPLibrary::Int64ToFString(INT64_MIN)), "-9223372036854775808");
	EXPECT_EQ(utf8(UCorvaneBPLibrary::Int64ToFString(INT64_MAX)), "9223372036854775807");
	EXPECT_EQ(UCorvaneBPLibrary::byteToMegabyte(1048576), 1.0f);
	EXPECT_EQ(UCorvaneBPLibrary::megabyteToByte(1), 1048576);
	EXPECT_EQ(UCorvaneBPLibrary::megabyteToByte(2048), INT32_MIN);
	EXPECT_EQ(UCorvaneBPLibrary::megabyteToByte(4097), 1048576);
	for (const auto encode : {&UCorvaneBPLibrary::urlEncode, &UCorvaneBPLibrary::urlEncodePure})
	{
		EXPECT_EQ(utf8(encode(u"aZ09-_.~ /?&=ü%")), "aZ09-_.~%20%2F%3F%26%3D%C3%BC%25");
		EXPECT_EQ(utf8(encode("")), "");
	}
}

TEST_F(PostAndIndividual, WhatTheLayerCannotSendIsRefusedInOneClearResult)
{
	LogCapture log;
	struct Case
	{
		const char* verb;
		const char* type;
		const char* content;
		int32 statusCode;
	};
	for (const Case& c : {Case{"GET", "text/plain", "body", 500}, {"POST", "", "a=1", 400}, {"DELETE", "", "a=1", 400}})
	{
		EXPECT_EQ(run(build({server.url(), {{"Content-Type", c.type}}, c.verb, EHTTPCorvIndividualType::STRING, c.content})).statusCode,
			c.statusCode)
			<< c.verb;
	}
	EXPECT_EQ(server.connectionCount(), 0);
	for (const char* verb : {"TRACE", "OPTIONS", "CONNECT"}) // this layer sends them
	{
		EXPECT_EQ(run(build({server.url(), {{"Content-Type", "x"}}, verb, EHTTPCorvIndividualType::STRING, ""})).statusCode, 200) << verb;
		EXPECT_EQ(server.requests().back().substr(0, std::string(verb).size()), verb);
	}
}
