#include "Host/Directories.h"
#include "UploadFixture.h"

using testing::ElementsAre;

namespace
{
	class UploadWire : public UploadTest
	{
	protected:
		/** A whole head, where everything between the user agent and the end is own. */
		std::string head(const char* verb, const std::string& own) const
		{
			return std::string(verb) + " / HTTP/1.1\r\n" + firstHeaders(sink.authority()) +
				   "User-Agent: UE4 Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) "
				   "Chrome/69.0.3497.81 Safari/537.36\r\n" +
				   own + "\r\n";
		}

		std::string memoryHead(const char* verb, const std::string& own = "") const
		{
			const Received got = sink.last();
			return head(verb, own + "Content-Type: multipart/form-data; boundary=----" + got.token() +
								  "\r\nContent-Length: " + std::to_string(got.body.size()) + "\r\n");
		}

		TArray<FhttpRequest> multi(bool bPost, const TArray<FString>& paths, const TArray<FString>& ids, const UploadOptions& options = {})
		{
			TArray<FhttpRequest> requests;
			FString id;
			const auto directory = EHTTPCorvFileUpload::E_ad;
			EXPECT_EQ(bPost ? UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPOST(
								  {}, text(sink.url()), options.header, directory, paths, ids, options.fields, "", requests, id)
							: UCorvaneBPLibrary::CreateHttpRequestFileMultiUploadPUT(
								  {}, text(sink.url()), options.header, directory, paths, ids, "", requests, id),
				0);
			return requests;
		}

		UploadSink sink;
	};

	/** A part of an in-memory body, from the line break in front of it on. */
	std::string filePart(
		const std::string& token, const std::string& field, const std::string& file, const std::string& type, const std::string& bytes)
	{
		return "\r\n------" + token + "\r\nContent-Disposition: form-data; name=\"" + field + "\"; filename=\"" + file +
			   "\"\r\nContent-Type: " + type + "\r\n\r\n" + bytes;
	}

	std::string textPart(const std::string& token, const std::string& field, const std::string& value)
	{
		return "\r\n------" + token + "\r\nContent-Disposition: form-data; name=\"" + field + "\"\r\n\r\n" + value;
	}

	std::string end(const std::string& token)
	{
		return "\r\n------" + token + "--\r\n";
	}

	const std::string binary("\0\r\n------\xFF", 10);
} // namespace

TEST_F(UploadWire, PostOfOneFile)
{
	const Completion result = run(post(sink.url(), dir.write("a.png", binary), {"myFile", {{"X-Own", "yes"}, {"Content-Type", "x"}}}));
	EXPECT_EQ(result.statusCode, 200);
	EXPECT_EQ(result.dataString, "thanks");
	const std::string token = sink.last().token();
	EXPECT_THAT(token, testing::MatchesRegex("UE4CorvanePlugin_-?[0-9]+"));
	EXPECT_EQ(sink.last().body, filePart(token, "myFile", "a.png", "image/png", binary) + end(token));
	const std::string type = "Content-Type: multipart/form-data; boundary=----" + token + "\r\n";
	EXPECT_EQ(
		sink.last().head, head("POST", "X-Own: yes\r\n" + type + "Content-Length: " + std::to_string(sink.last().body.size()) + "\r\n"));
}

TEST_F(UploadWire, FieldsFollowTheFileAsTheyAre)
{
	UploadOptions options{"f", {}, {{"b", "2"}, {"a", ""}, {u"k\u00fc\"", u"\u00fc\r\n\"x\" & y"}}};
	run(post(sink.url(), dir.write("a.txt", "hello"), options));
	const std::string token = sink.last().token();
	EXPECT_EQ(sink.last().body, filePart(token, "f", "a.txt", "text/plain", "hello") + textPart(token, "b", "2") +
									textPart(token, "a", "") + textPart(token, "kü%22", "ü\r\n\"x\" & y") + end(token));
	EXPECT_EQ(sink.last().head, memoryHead("POST"));
}

TEST_F(UploadWire, SeveralFilesTakeTheirNamesFromTheList)
{
	const TArray<FString> paths = {
		text(dir.write("one.php", "1")), text(dir.write("two.unknown", "")), text(dir.write("sub.png/three", binary))};
	for (const bool bPost : {true, false})
	{
		TArray<FhttpRequest> requests = multi(bPost, paths, {"x", ""}, {});
		requests[0].fileID = "last"; // no builder sets both, but native code may
		requests[0].filePath = text(dir.write("four.tar.gz", "4"));
		EXPECT_EQ(run(requests).statusCode, 200);
		const std::string token = sink.last().token();
		EXPECT_EQ(sink.last().body, filePart(token, "x", "one.php", "#application/x-httpd-php", "1") +
										filePart(token, "", "two.unknown", "application/octet-stream", "") +
										filePart(token, "last", "three", "application/octet-stream", binary) +
										filePart(token, "last", "four.tar.gz", "application/octet-stream", "4") + end(token));
		EXPECT_EQ(sink.last().head, memoryHead(bPost ? "POST" : "PUT"));
	}
}

TEST_F(UploadWire, NoFileAtAllIsAnEmptyForm)
{
	EXPECT_EQ(run(multi(true, {}, {"x"}, {})).statusCode, 200);
	EXPECT_EQ(sink.last().body, end(sink.last().token()));
}

TEST_F(UploadWire, PutOfOneFileIsAMultipartBodyToo)
{
	EXPECT_EQ(run(put(sink.url(), dir.write("a.json", "{}"), Type::PUT)).statusCode, 200);
	EXPECT_EQ(sink.last().body, filePart(sink.last().token(), "f", "a.json", "application/json", "{}") + end(sink.last().token()));
	EXPECT_EQ(sink.last().head, memoryHead("PUT"));
}

TEST_F(UploadWire, BlankStreamsDescribeTheFileInHeaders)
{
	for (const std::string& content : {binary, std::string(), std::string(300000, 'z')})
	{
		const std::string path = dir.write("a b.PNG", content);
		EXPECT_EQ(run(put(sink.url(), path, Type::PUT_STREAM_BLANK, {"my ü", {{"X-Own", "1"}}})).statusCode, 200);
		EXPECT_EQ(sink.last().head,
			head("PUT", "X-Own: 1\r\nfileid: my ü\r\nfilename: a b.PNG\r\nfileformat: PNG\r\nmimetype: image/png\r\nContent-Length: " +
							std::to_string(content.size()) + "\r\n"));
		EXPECT_TRUE(sink.last().body == content);
	}
	EXPECT_EQ(sink.connectionCount(), 1) << "an ordinary request, whose connection is kept";
}

TEST_F(UploadWire, StreamMultipartBeginsInItsHeader)
{
	const std::string thousand(1000, 'x');
	const std::string large(200000, 'y');
	struct Case
	{
		std::string name, content, fileID, type;
	};
	for (const Case& c : {Case{"a.bin", thousand, "f", "application/octet-stream"}, {"empty.png", "", "f", "image/png"},
			 {"b.txt", large, "", "text/plain"}, {"noext", binary, "f", "application/octet-stream"}})
	{
		for (const Type type : {Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
		{
			const std::string path = dir.write(c.name, c.content);
			const UploadOptions options{c.fileID, {{"content-length", "7"}, {"X-Own", "1"}, {"Content-Type", "x"}}};
			EXPECT_EQ(run(put(sink.url(), path, type, options)).statusCode, 200);
			const std::string token = "UE4CorvanePlugin_" + std::to_string(c.content.size());
			const std::string body = "------" + token + "\r\nContent-Disposition: form-data; name=\"" + c.fileID + "\"; filename=\"" +
									 c.name + "\"\r\n" + c.type + "\r\n\r\n" + c.content + end(token);
			EXPECT_EQ(sink.last().head, head("PUT", "X-Own: 1\r\nContent-Type: multipart/form-data; boundary=----" + token +
														"\r\nContent-Length: " + std::to_string(body.size()) + "\r\n"));
			EXPECT_TRUE(sink.last().body == body) << sink.last().body.substr(0, 200);
			EXPECT_TRUE(dir.read(c.name) == c.content);
			EXPECT_EQ(copyPath(), "");
		}
	}
	EXPECT_EQ(sink.connectionCount(), 8) << "the announced length may be wrong";
}

TEST_F(UploadWire, StreamMultipartAnnouncesUnitsAndSendsBytes)
{
	std::string body;
	RawServer server(
		[&](Connection& connection)
		{
			connection.readHead();
			body = connection.read(1141);
			connection.send(answer(200, ""));
			connection.waitForPeer();
		});
	const std::string path = dir.write("ü.png", std::string(1000, 'x'));
	EXPECT_EQ(run(put(server.url(), path, Type::PUT_STREAM_MP, {"myFile"})).statusCode, 200);
	EXPECT_THAT(server.requests().back(), testing::EndsWith("\r\nContent-Length: 1140\r\n\r\n"));
	EXPECT_THAT(body, testing::EndsWith("x\r\n------UE4CorvanePlugin_1000--\r\n"));
}

TEST_F(UploadWire, AnotherStreamWaitsForNoPersistentLength)
{
	UCorvaneBPLibrary::addPersistentHTTPRequestHeader("Content-Length", "5");
	run(put(sink.url(), dir.write("a.bin", "12345678"), Type::PUT_STREAM_MP));
	EXPECT_THAT(sink.last().head, testing::EndsWith("boundary=----UE4CorvanePlugin_8\r\nContent-Length: 152\r\n\r\n"));
}

TEST_F(UploadWire, NamesBreakOutOfNothing)
{
	const std::string evil = "a\"\r\nX-Evil: 1\r\n\r\n.tx\"t";
	const std::string safe = "a%22%0D%0AX-Evil: 1%0D%0A%0D%0A.tx%22t";
	const std::string path = dir.write(evil, "hello");
	for (const Type type : {Type::PUT, Type::PUT_STREAM_BLANK, Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		EXPECT_EQ(run(put(sink.url(), path, type, {"f\"\r\n"})).statusCode, 200);
		const Received got = sink.last();
		EXPECT_EQ((got.head + got.body).find("\nX-Evil"), std::string::npos);
		if (type == Type::PUT_STREAM_BLANK)
		{
			EXPECT_EQ(got.header("filename"), "a\"%0D%0AX-Evil: 1%0D%0A%0D%0A.tx\"t") << "there are no quotes to leave";
			EXPECT_EQ(got.header("fileformat"), "tx\"t");
			EXPECT_EQ(got.header("fileid"), "f\"%0D%0A");
		}
		else
		{
			EXPECT_THAT(got.body, testing::HasSubstr("name=\"f%22%0D%0A\"; filename=\"" + safe + "\"\r\n"));
		}
	}
	EXPECT_EQ(dir.read(evil), "hello");
}

TEST_F(UploadWire, FilesMayLieBelowTheProject)
{
	HostDirectories::Set(dir.path(), "/elsewhere");
	dir.write("Saved/a.bin", "hello");
	for (const Type type : {Type::PUT, Type::PUT_STREAM_BLANK, Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		TArray<FhttpRequest> requests;
		FString id;
		UCorvaneBPLibrary::CreateHttpRequestFileUploadPUT(
			{}, text(sink.url()), {}, EHTTPCorvFileUpload::E_gd, "Saved/a.bin", "f", type, "", requests, id);
		EXPECT_EQ(run(requests).statusCode, 200) << static_cast<int>(type);
		EXPECT_THAT(sink.last().body, testing::HasSubstr("hello"));
	}
	EXPECT_EQ(dir.read("Saved/a.bin"), "hello");
	EXPECT_EQ(copyPath(), "");
}

TEST_F(UploadWire, ProgressIsTheShareOfTheBody)
{
	const std::string path = dir.write("a.bin", std::string(500000, 'x'));
	for (const Type type : {Type::PUT, Type::PUT_STREAM_BLANK, Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		uploads.clear();
		run(put(sink.url(), path, type, {"f", {}, {}, "progress"}));
		ASSERT_FALSE(uploads.empty());
		// The beginning of a stream multipart body goes out as a header.
		const bool beginsInHeader = type == Type::PUT_STREAM_MP || type == Type::PUT_STREAM_COPY;
		const size_t size = beginsInHeader ? 500000 + tail(500000).size() : sink.last().body.size();
		EXPECT_EQ(uploads.back().size, static_cast<float>(size));
		EXPECT_EQ(uploads.back().bytesSent, static_cast<int32>(size));
		EXPECT_EQ(uploads.back().percentUpload, 100.0f);
		EXPECT_EQ(uploads.back().requestID, "progress");
		EXPECT_TRUE(downloads.empty());
	}
}

TEST_F(UploadWire, ProgressRisesWhileBytesAreSent)
{
	constexpr size_t size = 24 << 20; // more than the buffers on the way hold
	const std::string path = dir.write("a.bin", std::string(size, 'x'));
	TArray<FhttpRequest> all = post("http://", path);
	for (const Type type : {Type::PUT, Type::PUT_STREAM_BLANK, Type::PUT_STREAM_MP, Type::PUT_STREAM_COPY})
	{
		all.Append(put("http://", path, type));
	}
	all.Append(individual("http://", path));
	all.Append(individual("http://", std::string(size, 'x')));
	all.Last().requestType = EHTTPCorvRequestType::INDIVIDUAL; // its text is the body
	EXPECT_EQ(all.Num(), 7);
	for (FhttpRequest& record : all)
	{
		uploads.clear();
		Gate read;
		UploadSink slow(&read);
		record.url = text(slow.url());
		execute({record});
		ASSERT_TRUE(loop.WaitFor([this] { return !uploads.empty() && uploads.back().bytesSent > 0; }, patienceSeconds))
			<< static_cast<int>(record.requestType);
		EXPECT_LT(uploads.back().percentUpload, 100);
		read.open();
		drain();
		EXPECT_EQ(static_cast<float>(uploads.back().bytesSent), uploads.back().size);
		EXPECT_GE(uploads.back().bytesSent, static_cast<int32>(size));
		EXPECT_EQ(uploads.back().percentUpload, 100);
		for (size_t i = 1; i < uploads.size(); ++i)
		{
			EXPECT_GE(uploads[i].bytesSent, uploads[i - 1].bytesSent);
		}
	}
}
