#include "Calls.h"
#include "LogCapture.h"
#include "ModuleFixture.h"
#include "TempDir.h"
#include "UploadFixture.h"

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace
{
	class PostAndIndividual : public ModuleFixture
	{
	protected:
		/** The pins of a request to the sink, which an individual one needs as well. */
		Pins typed(Pins pins = {}) const
		{
			pins.url = text(sink.url());
			pins.header = {{"Content-Type", "text/plain"}};
			return pins;
		}
		static TArray<FhttpRequest> individual(Pins pins) { return build("CreateHttpRequestIndividual", std::move(pins)); }
		int logged(ELogVerbosity::Type verbosity, const char* part) const { return log.count("LogTemp", verbosity, part); }
		/** Sends. @return the head that came in. */
		std::string headOf(const TArray<FhttpRequest>& requests)
		{
			EXPECT_EQ(run(requests).statusCode, 200);
			return sink.last().head;
		}

		LogCapture log;
		UploadSink sink;
		TempDir dir;
	};
} // namespace

TEST_F(PostAndIndividual, GoOverTheWireAsDescribed)
{
	const std::string post = headOf(build("CreateHttpRequestPOST",
		{.url = text(sink.url()), .header = {{"X-Own", "yes"}}, .POSTData = {{"a", "1"}, {"b", "x y"}, {u"ü", "&="}}}));
	EXPECT_EQ(sink.last().body, "a=1&b=x y&ü=&=");
	EXPECT_THAT(post, StartsWith("POST / HTTP/1.1\r\n"));
	EXPECT_THAT(post, EndsWith("537.36\r\nContent-Type: application/x-www-form-urlencoded\r\nContent-Length: 15\r\nX-Own: yes\r\n\r\n"));
	EXPECT_THAT(headOf(build("CreateHttpRequestPOST", {.url = text(sink.url())})), HasSubstr("Content-Length: 0\r\n"));

	const std::string patch =
		headOf(individual({.url = text(sink.url()), .header = {{"content-TYPE", "text/x"}, {"X-A", "1"}}, .content = "body"}));
	EXPECT_EQ(sink.last().body, "body");
	EXPECT_THAT(patch, StartsWith("PATCH / HTTP/1.1\r\n"));
	EXPECT_THAT(patch, EndsWith("537.36\r\ncontent-TYPE: text/x\r\nX-A: 1\r\nContent-Length: 4\r\n\r\n"));
}

TEST_F(PostAndIndividual, PersistentHeadersGoIntoEveryRequestUntilRemoved)
{
	const std::pair<const char*, const char*> added[] = {{"X-All", "1"}, {"user-agent", "persistent"},
		{"content-length", "99"}, // must not break a POST
		{"", "x"}, {"X-Empty", ""}};
	for (const auto& [name, value] : added)
	{
		UCorvaneBPLibrary::addPersistentHTTPRequestHeader(name, value);
	}
	const std::string head =
		headOf(build("CreateHttpRequestPOST", {.url = text(sink.url()), .header = {{"x-ALL", "2"}}, .POSTData = {{"a", "1"}}}));
	EXPECT_THAT(head, HasSubstr("user-agent: persistent\r\n"));
	EXPECT_THAT(head, EndsWith("\r\nContent-Length: 3\r\nx-ALL: 2\r\n\r\n"));

	for (const char* name : {"x-all", "never added", "Content-Length", ""})
	{
		UCorvaneBPLibrary::removePersistentHTTPRequestHeader(name);
	}
	EXPECT_THAT(headOf(get(sink.url())), Not(HasSubstr("X-All")));
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary (addPersistentHTTPRequestHeader): Id not set."), 1);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary (addPersistentHTTPRequestHeader): Value not set. id=X-Empty"), 1);
	EXPECT_EQ(logged(ELogVerbosity::Error, "UCorvaneBPLibrary (removePersistentHTTPRequestHeader): Id not set."), 1);
}

TEST_F(PostAndIndividual, IndividualAddsTheLengthOfItsText)
{
	const auto lengthOf = [this](Pins pins)
	{
		pins.url = text(sink.url());
		pins.addContentLengthHeader = true;
		pins.header = {{"Content-Type", "x"}, {"content-length", "77"}};
		return utf8(individual(pins)[0].header.FindRef("Content-Length"));
	};
	EXPECT_EQ(lengthOf({.content = u"é"}), "2");
	EXPECT_TRUE(log.lines().empty());
	EXPECT_EQ(lengthOf({.contentType = EHTTPCorvIndividualType::STREAM, .content = "/a/path"}), "7") << "of the path, as it always was";
	EXPECT_EQ(lengthOf({.verb = "GET"}), "0");
	const std::string setting = "Corv Plugin: Setting a Content-Length header ";
	EXPECT_EQ(logged(ELogVerbosity::Warning, "Content-Length header has the length of the path"), 1);
	EXPECT_EQ(logged(ELogVerbosity::Warning, (setting + "for a GET request can lead to an error on the server. ").c_str()), 1);
	EXPECT_EQ(logged(ELogVerbosity::Warning, (setting + "with the value 0 can lead to an error on the server. ").c_str()), 1);
	EXPECT_EQ(log.lines().size(), 3u);
}

TEST_F(PostAndIndividual, IndividualRefusalsComeOneTaskLater)
{
	const FString url = text(sink.url());
	const Pins refused[] = {{.url = url}, {.url = url, .header = {{"Accept", "x"}}}, {.url = "ab", .header = {{"Content-Type", "x"}}},
		typed({.verb = ""}), typed({.verb = "FETCH"}), typed({.verb = "GE"}), typed({.verb = "GET "})};
	for (Pins pins : refused)
	{
		pins.requestID = "id before";
		EXPECT_EQ(individual(pins).Num(), 0);
		EXPECT_TRUE(completions.empty()) << "never inside the call";
		loop.Tick();
		EXPECT_EQ(takeResults(), std::vector<std::string>{"id before: 400 "});
	}
	EXPECT_EQ(logged(ELogVerbosity::Error, "Cancel Request : "), 7);
	EXPECT_EQ(
		logged(ELogVerbosity::Error, "Cancel Request : Wrong verb. Possible values:GET,HEAD,POST,PUT,DELETE,TRACE,OPTIONS,CONNECT,PATCH"),
		4);
}

TEST_F(PostAndIndividual, AFileIsTheBodyOrTheRequestIsRefused)
{
	const std::string bytes("\0\xFF bytes", 8);
	for (const std::string& path : {dir.write("body.bin", bytes), dir.path("missing"), dir.path(), std::string()})
	{
		const Completion result = run(individual(typed({.contentType = EHTTPCorvIndividualType::STREAM, .content = text(path)})));
		EXPECT_EQ(result.statusCode, path.ends_with("body.bin") ? 200 : 400) << path;
		loop.CollectGarbage();
	}
	ASSERT_EQ(sink.log().size(), 1u);
	EXPECT_EQ(sink.last().body, bytes);
}

TEST_F(PostAndIndividual, OneKindOfProgressWins)
{
	struct Case
	{
		bool download, upload, events;
		const char* seen;
	};
	for (const Case& c :
		{Case{true, false, false, "download"}, {true, true, false, "upload"}, {true, true, true, "events"}, {false, false, false, ""}})
	{
		Pins pins = typed({.content = text(std::string(100000, 'z'))});
		pins.bindDownloadProgressEvent = c.download;
		pins.bindUploadProgressEvent = c.upload;
		pins.bindServerSendEvent = c.events;
		run(individual(pins));
		std::string seen = std::exchange(downloads, {}).empty() ? "" : "download";
		seen += std::exchange(serverSendEvents, {}).empty() ? "" : "events";
		if (!uploads.empty())
		{
			seen += "upload";
			EXPECT_FLOAT_EQ(uploads.back().size, 100000.0f);
			EXPECT_EQ(uploads.back().bytesSent, 100000);
			EXPECT_FLOAT_EQ(uploads.back().percentUpload, 100.0f);
			uploads.clear();
		}
		EXPECT_EQ(seen, c.seen);
	}
}

TEST_F(PostAndIndividual, ConversionsKeepTheirOddities)
{
	EXPECT_EQ(utf8(UCorvaneBPLibrary::Int64ToFString(0)), "0");
	EXPECT_EQ(utf8(UCorvaneBPLibrary::Int64ToFString(INT64_MIN)), "-9223372036854775808");
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
	const auto result = [this](const char* verb, const char* type, const char* content) {
		return run(individual({.url = text(sink.url()), .header = {{"Content-Type", type}}, .verb = verb, .content = content})).statusCode;
	};
	EXPECT_EQ(result("GET", "text/plain", "body"), 500);
	EXPECT_EQ(result("POST", "", "a=1"), 400);
	EXPECT_EQ(result("DELETE", "", "a=1"), 400);
	EXPECT_EQ(sink.connections(), 0u);
	for (const char* verb : {"get", "Post", "PUT", "DELETE", "TRACE", "OPTIONS", "CONNECT", "PATCH"}) // this layer sends them
	{
		EXPECT_EQ(result(verb, "x", ""), 200) << verb;
		EXPECT_THAT(sink.last().head, StartsWith(utf8(FString(verb).ToUpper()) + " "));
	}
	EXPECT_EQ(individual(typed({.verb = "HEAD"})).Num(), 1);
}
