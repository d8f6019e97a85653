#include "Host/Directories.h"
#include "UploadFixture.h"

namespace
{
	class UploadWire : public UploadTest
	{
	protected:
		/** Compares the last request, where everything in the head between the user agent and the length is own. */
		void expectSent(const char* verb, const std::string& own, const std::string& body) const
		{
			EXPECT_EQ(
				sink.last().head, std::string(verb) + " / HTTP/1.1\r\n" + firstHeaders(sink.authority()) +
									  "User-Agent: UE4 Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) "
									  "Chrome/69.0.3497.81 Safari/537.36\r\n" +
									  own + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n");
			EXPECT_TRUE(sink.last().body == body) << sink.last().body.substr(0, 500);
		}

		/** Compares the last form, whose boundary has a number of its own. @param parts  each without its delimiter. */
		void expectForm(const char* verb, const std::vector<std::string>& parts, const std::string& own = "") const
		{
			const std::string type(sink.last().header("Content-Type"));
			EXPECT_THAT(type, testing::MatchesRegex("multipart/form-data; boundary=----UE4CorvanePlugin_-?[0-9]+"));
			const std::string token = type.substr(type.find("UE4"));
			std::string body;
			for (const std::string& part : parts)
			{
				body += "\r\n------" + token + "\r\nContent-Disposition: form-data; name=\"" + part;
			}
			expectSent(verb, own + "Content-Type: " + type + "\r\n", body + "\r\n------" + token + "--\r\n");
		}

		UploadSink sink;
	};

	std::string filePart(const std::string& field, const std::string& file, const std::string& type, const std::string& bytes)
	{
		return field + "\"; filename=\"" + file + "\"\r\nContent-Type: " + type + "\r\n\r\n" + bytes;
	}

	const std::string binary("\0\r\n------\xFF", 10);
} // namespace

TEST_F(UploadWire, FormsOfOneFile)
{
	const Completion result = run(post(sink.url(), dir.write("a.png", binary), {"myFile", {{"X-Own", "yes"}, {"Content-Type", "x"}}}));
	EXPECT_EQ(result.statusCode, 200);
	EXPECT_EQ(result.dataString, "thanks");
	expectForm("POST", {filePart("myFile", "a.png", "image/png", binary)}, "X-Own: yes\r\n");

	run(post(sink.url(), dir.write("a.txt", "hello"), {"f", {}, {{"b", "2"}, {"a", ""}, {u"k\u00fc\"", u"\u00fc\r\n\"x\" & y"}}}));
	expectForm("POST", {filePart("f", "a.txt", "text/plain", "hello"), "b\"\r\n\r\n2", "a\"\r\n\r\n", "kü%22\"\r\n\r\nü\r\n\"x\" & y"});

	run(put(sink.url(), dir.write("a.json", "{}"), Type::PUT));
	expectForm("PUT", {filePart("f", "a.json", "application/json", "{}")});
}

TEST_F(UploadWire, SeveralFilesTakeTheirNamesFromTheList)
{
	const TArray<FString> paths = {
		text(dir.write("one.php", "1")), text(dir.write("two.unknown", "")), text(dir.write("sub.png/three", binary))};
	for (const bool bPost : {true, false})
	{
		TArray<FhttpRequest> requests = multi(bPost, sink.url(), paths, {"x", ""});
		requests[0].fileID = "last"; // no builder sets both, but native code may
		requests[0].filePath = text(dir.write("four.tar.gz", "4"));
		run(requests);
		expectForm(bPost ? "POST" : "PUT",
			{filePart("x", "one.php", "#application/x-httpd-php", "1"), filePart("", "two.unknown", "application/octet-stream", ""),
				filePart("last", "three", "application/octet-stream", binary),
				filePart("last", "four.tar.gz", "application/octet-stream", "4")});
	}
	run(multi(true, sink.url(), {}, {"x"}));
	expectForm("POST", {});
}

TEST_F(UploadWire, BlankStreamsDescribeTheFileInHeaders)
{
	for (const std::string& content : {binary, std::string(), std::string(300000, 'z')})
	{
		run(put(sink.url(), dir.write("a b.PNG", content), Type::PUT_STREAM_BLANK, {"my ü", {{"X-Own", "1"}}}));
		expectSent("PUT", "X-Own: 1\r\nfileid: my ü\r\nfilename: a b.PNG\r\nfileformat: PNG\r\nmimetype: image/png\r\n", content);
	}
	EXPECT_EQ(sink.connections(), 1u) << "an ordinary request, whose connection is kept";
}

TEST_F(UploadWire, StreamMultipartBeginsInItsHeader)
{
	struct Case
	{
		std::string name, content, fileID, type;
	};
	for (const Case& c : {Case{"a.bin", thousand, "f", "application/octet-stream"}, {"empty.png", "", "f", "image/png"},
			 {"b.txt", std::string(200000, 'y'), "", "text/plain"}, {"noext", binary, "f", "application/octet-stream"}})
	{
		for (const Type type : {Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
		{
			const std::string path = dir.write(c.name, c.content);
			run(put(sink.url(), path, type, {c.fileID, {{"content-length", "7"}, {"X-Own", "1"}, {"Content-Type", "x"}}}));
			const std::string delimiter = "----UE4CorvanePlugin_" + std::to_string(c.content.size());
			expectSent("PUT", "X-Own: 1\r\nContent-Type: multipart/form-data; boundary=" + delimiter + "\r\n",
				"--" + delimiter + "\r\nContent-Disposition: form-data; name=\"" + c.fileID + "\"; filename=\"" + c.name + "\"\r\n" +
					c.type + "\r\n\r\n" + c.content + tail(c.content.size()));
			EXPECT_TRUE(dir.read(c.name) == c.content);
			EXPECT_THAT(files(), testing::Not(testing::Contains(testing::HasSubstr("_UEUploadCopy_"))));
		}
	}
	EXPECT_EQ(sink.connections(), 8u) << "the announced length may be wrong";
}

TEST_F(UploadWire, StreamMultipartAnnouncesUnitsAndSendsBytes)
{
	UCorvaneBPLibrary::addPersistentHTTPRequestHeader("Content-Length", "5");
	run(put(sink.url(), dir.write("ü.png", thousand), Type::PUT_STREAM_MP, {"myFile"}));
	EXPECT_THAT(sink.last().head, testing::EndsWith("\r\nContent-Length: 1140\r\n\r\n"));
	EXPECT_THAT(sink.last().body, testing::EndsWith("x\r\n------UE4CorvanePlugin_1000--\r")) << "one byte is more than it said";
}

TEST_F(UploadWire, NamesBreakOutOfNothing)
{
	const std::string evil = "100%22 ü;'\"\r\nX-Evil: 1\r\n\r\n.tx\"t";
	const std::string path = dir.write(evil, "hello");
	for (const Type type : everyType)
	{
		run(put(sink.url(), path, type, {"f\"\r\n\\"}));
		const Lab::Request& got = sink.last();
		EXPECT_EQ((got.head + got.body).find("\nX-Evil"), std::string::npos);
		if (type == Type::PUT_STREAM_BLANK)
		{
			EXPECT_EQ(got.header("filename"), "100%22 ü;'\"%0D%0AX-Evil: 1%0D%0A%0D%0A.tx\"t") << "there are no quotes to leave";
			EXPECT_EQ(got.header("fileformat"), "tx\"t");
			EXPECT_EQ(got.header("fileid"), "f\"%0D%0A\\");
		}
		else
		{
			EXPECT_THAT(
				got.body, testing::HasSubstr("name=\"f%22%0D%0A\\\"; filename=\"100%22 ü;'%22%0D%0AX-Evil: 1%0D%0A%0D%0A.tx%22t\"\r\n"));
		}
	}
	EXPECT_EQ(dir.read(evil), "hello");
}

TEST_F(UploadWire, FilesMayLieBelowTheProject)
{
	HostDirectories::Set(dir.path(), "/elsewhere");
	dir.write("Saved/a.bin", "hello");
	for (const Type type : everyType)
	{
		TArray<FhttpRequest> requests;
		FString id;
		UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
			{}, text(sink.url()), {}, EHTTPCorvFileUpload::E_gd, "Saved/a.bin", "f", type, "", requests, id);
		run(requests);
		EXPECT_THAT(sink.last().body, testing::HasSubstr("hello"));
	}
	EXPECT_EQ(dir.read("Saved/a.bin"), "hello");
	EXPECT_THAT(files(), testing::ElementsAre("Saved", "Saved/a.bin"));
}

TEST_F(UploadWire, ProgressIsTheShareOfTheBodyAndRisesWhileBytesAreSent)
{
	constexpr int32 size = 24 << 20; // more than the buffers on the way hold
	const std::string content(size, 'x');
	TArray<FhttpRequest> all = ofEveryKind("http://", dir.write("a.bin", content));
	FhttpRequest ofText = all[1];
	ofText.requestType = EHTTPCorvRequestType::INDIVIDUAL;
	ofText.content = text(content);
	all.Add(ofText);
	for (FhttpRequest& record : all)
	{
		uploads.clear();
		Lab::Gate read;
		UploadSink slow(read);
		record.url = text(slow.url());
		execute({record});
		ASSERT_TRUE(until([this] { return !uploads.empty() && uploads.back().bytesSent > 0; }));
		EXPECT_LT(uploads.back().percentUpload, 100);
		read.open();
		drain();
		// The beginning of a stream multipart body goes out as a header.
		const bool beginsInHeader =
			record.requestType == EHTTPCorvRequestType::PUT_STREAM_MP || record.requestType == EHTTPCorvRequestType::PUT_STREAM_COPY;
		const auto sent = static_cast<int32>(beginsInHeader ? content.size() + tail(content.size()).size() : slow.last().body.size());
		EXPECT_EQ(uploads.back().bytesSent, sent) << static_cast<int>(record.requestType);
		EXPECT_EQ(uploads.back().size, static_cast<float>(sent));
		EXPECT_EQ(uploads.back().percentUpload, 100);
		EXPECT_TRUE(std::is_sorted(uploads.begin(), uploads.end(),
			[](const UploadProgress& before, const UploadProgress& after) { return before.bytesSent < after.bytesSent; }));
	}
	EXPECT_TRUE(downloads.empty());
}

TEST_F(UploadWire, IsRefusedByItsBuilderWithoutAUrlOrAListOfNames)
{
	const UploadOptions options{"x", {}, {}, "given", get("http://other")};
	const auto expectRefusal = [this](const TArray<FhttpRequest>& requests)
	{
		EXPECT_EQ(requests.Num(), 1) << "the records so far go on";
		ASSERT_EQ(completions.size(), 1u) << "inside the call";
		EXPECT_EQ(completions[0].requestID + std::to_string(completions[0].statusCode), "given400");
		completions.clear();
	};
	expectRefusal(put("ab", "/f", Type::PUT, options));
	expectRefusal(post("ab", "/f", options));
	for (const bool bPost : {true, false})
	{
		expectRefusal(multi(bPost, "ab", {"/f"}, {}, options));
		expectRefusal(multi(bPost, "abc", {"/f"}, {}, options));
		EXPECT_EQ(multi(bPost, "abc", {"/f"}, {""}, options).Num(), 2) << "an empty name is one";
	}
	EXPECT_EQ(logged(ELogVerbosity::Error, "Cancel Request : URL to short."), 4);
	EXPECT_EQ(logged(ELogVerbosity::Error, "Cancel Request : File ID is missing"), 2);
	EXPECT_EQ(put("abc", "/f", static_cast<Type>(9), options)[1].requestType, EHTTPCorvRequestType::PUT);
}
