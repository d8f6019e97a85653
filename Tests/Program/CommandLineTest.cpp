#include "DemoOrigin.h"
#include "ProcessRun.h"

#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace
{
	using Texts = std::vector<std::string>;

	struct Case
	{
		Texts arguments; // "{url}" stands for the server's
		int status;
		Texts out; // what standard output holds; none = it is empty
		Texts err;
	};

	const std::string get = "CorvaneBPLibrary.CreateHttpRequestGET";

	const std::string individual = "CreateHttpRequestIndividual";
	const std::string upload = "CreateHttpRequestFileMultiUploadPOST";

	const Case cases[] = {
		{{"call", "createhttprequestget", "URL={url}/hello", "optionalRequestID=id"}, 0,
			{"statusCode: 200\n", "dataString: Hello!\n", "byteData: <6 bytes>\n", "requestID: id\n"}, {}},
		{{"call", "--json", get, "url={url}/hello"}, 0,
			{"{\"", R"("statusCode":200)", R"("byteData":"SGVsbG8h")", R"("dataArray":["Hello!"])", R"("header":[")"}, {}},
		{{"call", get, "url=h.example/x"}, 2, {},
			{"GET: 'h.example/x' is no address: the scheme is missing, did you mean 'http://h.example/x'?"}},
		{{"call", get, "url=ftp://h/x"}, 2, {}, {"'ftp://h/x' cannot be asked for: its scheme is neither http nor https"}},
		{{"call", "--drive-base", "http:///x", get}, 2, {}, {"--drive-base: 'http:///x' is no address: it names no host"}},
		{{"call", get}, 2, {}, {"pin 'url' is missing"}},
		{{"call", get, "http://h"}, 2, {}, {"'http://h' is no pin=value, did you mean 'url=http://h'?"}},
		{{"call", get, "url=http://h", "requestID=x"}, 2, {}, {"pin 'requestID' is an output"}},
		{{"call", get, "url=http://h", "URL=http://h"}, 2, {}, {"pin 'URL' is set twice"}},
		{{"call", get, "header=Accept"}, 2, {}, {R"(it is written header='{"Accept":"text/plain"}')"}},
		{{"call", get, "-H", "Accept"}, 2, {}, {"'Accept' is no header; it is written -H 'Accept: text/plain'"}},
		{{"call", get, "url={url}/headers", "-H", "X-Two:  a: b"}, 0, {"X-Two: a: b\r\n"}, {}},
		{{"call", upload, "filePaths=[\"/etc/passwd\",\"/etc/group\"]", "fileIDs=[\"a\",\"a\"]", "directoryType=E_ad", "url=http://h"}, 2,
			{}, {"pin 'fileIDs' gives two files the field name 'a'"}},
		{{"call", upload, "filePaths=[\"/no/file\"]", "fileIDs=[\"a\"]", "directoryType=E_ad", "url=http://h"}, 2, {},
			{"pin 'filePaths' names '/no/file', which cannot be read: No such file or directory"}},
		{{"call", get + "Download", "filePathWithFileName=/no/file", "directoryType=E_ad", "url=http://h"}, 2, {},
			{"names '/no/file', which cannot be written: No such file or directory"}},
		{{"call", "stringToBase64String", "string=@x"}, 0, {"base64String: QHg=\n"}, {}},
		{{"call", individual, "url={url}/echo", "verb=PATCH", "contentBody=@/etc/passwd", "header={\"Content-Type\":\"a/b\"}"}, 0,
			{"dataString: PATCH root:"}, {}},
		{{"call", individual, "contentBody=@/no/file"}, 2, {}, {"cannot read '/no/file': No such file or directory"}},
		{{"call", "--timeout", "0.2", get, "url={url}/wait/3000"}, 1, {},
			{"corvane: CorvaneBPLibrary.CreateHttpRequestGET took more than 0.2 s\n"}},
		{{"call", "FileFunctionCorv.fileSize"}, 2, {}, {"there is no class 'FileFunctionCorv', did you mean 'FileFunctionsCorv'?"}},
		{{"nodes", "onhttpRequestCompleteDelegat"}, 2, {}, {"did you mean 'onhttpRequestCompleteDelegate'?"}},
		{{"nodes", "onhttpFileUploadDelegate"}, 0,
			{"CorvaneBPLibrary.onhttpFileUploadDelegate  [Corvane|Events|Upload]\n", "  out    size: float\n           Filesize in Byte\n"},
			{}},
		{{"--version"}, 0, {"corvane 0."}, {}},
		{{"help"}, 0, {"Usage: corvane [OPTIONS] SUBCOMMAND\n", "completion"}, {}},
		{{"help", "run"}, 0, {"Usage: corvane run [OPTIONS] SCRIPT [ARG...]\n"}, {}},
		{{"call", get, "url={url}/headers", R"(header={"X-Two": "a=b"})"}, 0, {"X-Two: a=b"}, {}},
		{{"call", "getCleanDirectory", "directoryType=E_ad", "filePath=/a/b/../c"}, 0, {"ReturnValue: /a/c\n"}, {}},
		{{"call", "--project", "/usr", "getCleanDirectory", "directoryType=E_gd", "filePath=/x"}, 0, {"ReturnValue: /usr/x\n"}, {}},
		{{"call", "AsyncExecuteHTTP_GET_REQUEST", "url={url}/hello", "optionalRequestID=id"}, 0,
			{"statusCode: 200\n", "dataString: Hello!\n", "data: [\"Hello!\"]\n", "requestID: id\n"}, {}},
		{{"call", "AsyncExecuteHTTP_Individual_REQUEST", "url={url}/echo", "verb=POST", "optionalRequestID=id"}, 1,
			{"statusCode: 400\n", "requestID: id\n"}, {"LogTemp: Error: "}},
		{{"call", "--drive-base", "{url}", "AsyncExecuteHTTP_GoogleFileInfo_REQUEST", "downloadID=level"}, 0,
			{"fileName: level.pak\n", "fileSizeInBytes: 1572864\n", "statusCode: 200\n"}, {}},
		{{"call", "DownloadFile", "URL={url}/hello", "FilePath=/dev/null/x", "Options={\"Attempts\":1}"}, 1,
			{"Report.Outcome: CannotWrite\n"}, {"Transfer: "}},
		{{"call", "DownloadFile", "Options={\"Atempts\":1}"}, 2, {}, {"has no field 'Atempts', did you mean 'Attempts'?"}},
		{{"nodes", "DownloadFile"}, 0,
			{"  in     Options: CorvaneDownloadOptions", "           Attempts: int32 = 5\n               Tries in a row",
				"  out    AsyncTaskProxy: ", "               Keep = 1: Keep. It stays", "  event  OnProgress\n"},
			{}},
		{{"nodes", "--json", "CorvaneTransfer.Pause"}, 0, {R"("name": "CorvaneTransfer.Pause")"}, {}},
		{{"call", "nope"}, 2, {}, {"corvane: there is no function 'nope'; 'corvane nodes' lists them all"}},
		{{"call", "createHttpRequestGTE"}, 2, {}, {"there is no function 'createHttpRequestGTE', did you mean 'CreateHttpRequestGET'?"}},
		{{"nodes", "filefunctionscorv.fileSise"}, 2, {}, {"did you mean 'FileFunctionsCorv.fileSize'?"}},
		{{"call", get, "uri=x"}, 2, {}, {"CreateHttpRequestGET: unknown pin 'uri', did you mean 'url'?"}},
		{{"call", get, "url"}, 2, {}, {"'url' is no pin=value"}},
		{{"call", get, "bindServerSendEvent=5"}, 2, {}, {"CreateHttpRequestGET: pin 'bindServerSendEvent': expected bool, got 5"}},
		{{"call", "getCleanDirectory", "directoryType=E_gdd"}, 2, {},
			{"expected EFileFunctionsCorvDirectoryType (E_gd, E_ad), got \"E_gdd\", did you mean 'E_gd'?"}},
		{{"call", get, "otherHttpRequests=[1]"}, 2, {}, {"a httpRequest cannot be written on a command line\n"}},
		{{}, 2, {}, {"corvane: what shall be done? One of: run, call, "}},
		{{"fetch"}, 2, {}, {"corvane: there is no verb 'fetch'; there are run, call, "}},
		{{"calls"}, 2, {}, {"corvane: there is no verb 'calls', did you mean 'call'?\n"}},
		{{"-v", "call", get}, 2, {}, {"corvane: -v belongs behind 'call'\n"}},
		{{"call", get, "--verbos"}, 2, {}, {"corvane: unknown option --verbos, did you mean '--verbose'?\n"}},
		{{"demo", "now"}, 2, {}, {"corvane: 'now' is more than demo takes\n"}},
		{{"call"}, 2, {}, {"corvane: FUNCTION is required; 'corvane help call' tells more\n"}},
		{{"nodes", "--html", "/dev/null/pages"}, 1, {}, {"corvane: "}},
		{{"call", "--project", "/no/such/folder", get}, 2, {}, {"--project"}},
		{{"run"}, 2, {}, {"run needs a script"}},
		{{"run", "--nope", "script.lua"}, 2, {}, {"unknown option --nope"}},
		{{"run", "missing.lua"}, 2, {}, {"cannot run 'missing.lua': No such file or directory"}},
		{{"run", "/usr"}, 2, {}, {"cannot run '/usr': Is a directory"}},
		{{"--help"}, 0, {"run", "call", "nodes", "demo"}, {}},
		{{"demo"}, 0, {"== 01-get.lua: A GET request", "\nAll examples ran.\n"}, {"URL to short"}},
		{{"nodes", "--json", "CreateHttpRequestGETLowRamDownload"}, 0,
			{R"("name": "CorvaneBPLibrary.CreateHttpRequestGETLowRamDownload",)", R"("kind": "callable")", R"("default": "10485760")",
				R"("direction": "out")", R"("E_RESUME": 2)", R"("mayStayUnconnected": true)", R"("11-large-file-in-steps.lua")"},
			{}},
		{{"nodes"}, 0,
			{"CorvaneBPLibrary.CreateHttpRequestGET  [Corvane|GET]\n    Send a GET HTTP Request to Webserver.\n",
				"  in     header: map of string to string\n", "  out    requestID: string\n",
				"  in     directoryType: EFileFunctionsCorvDirectoryType (E_gd, E_ad)\n",
				"           STREAM = 1: Content as Stream (Filepath). The content is the path of a file",
				"           at least 3 characters, sent as given.\n", "  event  OnSuccess\n",
				"AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Download_REQUEST  [Corvane|Download]\n"},
			{}},
	};

	void expectTexts(const std::string& whole, const Texts& parts)
	{
		for (const std::string& part : parts)
		{
			EXPECT_THAT(whole, HasSubstr(part));
		}
		EXPECT_EQ(whole.empty(), parts.empty()) << whole;
	}
} // namespace

TEST(CommandLine, GivesStatusAndOutput)
{
	const Program::DemoOrigin origin;
	for (const Case& tested : cases)
	{
		Texts words = tested.arguments;
		for (std::string& word : words)
		{
			if (const size_t place = word.find("{url}"); place != std::string::npos)
			{
				word.replace(place, 5, origin.url());
			}
		}
		SCOPED_TRACE(::testing::PrintToString(words));
		const ProcessRun run = runProgram(words);
		EXPECT_EQ(run.status, tested.status);
		expectTexts(run.out, tested.out);
		expectTexts(run.err, tested.err);
	}
}
