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

	const Case cases[] = {
		{{"call", "createhttprequestget", "URL={url}/hello", "optionalRequestID=id"}, 0,
			{"statusCode: 200\n", "dataString: Hello!\n", "byteData: <6 bytes>\n", "requestID: id\n"}, {}},
		{{"call", "--json", get, "url={url}/hello"}, 0,
			{"{\"", R"("statusCode":200)", R"("byteData":"SGVsbG8h")", R"("dataArray":["Hello!"])", R"("header":[")"}, {}},
		{{"call", get, "url=x"}, 1, {"statusCode: 400\n"}, {"LogTemp: Error: "}},
		{{"call", get, "url={url}/headers", R"(header={"X-Two": "a=b"})"}, 0, {"X-Two: a=b"}, {}},
		{{"call", "getCleanDirectory", "directoryType=E_ad", "filePath=/a/b/../c"}, 0, {"ReturnValue: /a/c\n"}, {}},
		{{"call", "--project", "/usr", "getCleanDirectory", "directoryType=E_gd", "filePath=/x"}, 0, {"ReturnValue: /usr/x\n"}, {}},
		{{"call", "AsyncExecuteHTTP_GET_REQUEST", "url={url}/hello", "optionalRequestID=id"}, 0,
			{"statusCode: 200\n", "dataString: Hello!\n", "data: [\"Hello!\"]\n", "requestID: id\n"}, {}},
		{{"call", "AsyncExecuteHTTP_Individual_REQUEST", "url={url}/echo", "optionalRequestID=id"}, 1,
			{"statusCode: 400\n", "requestID: id\n"}, {"LogTemp: Error: "}},
		{{"call", "--drive-base", "{url}", "AsyncExecuteHTTP_GoogleFileInfo_REQUEST", "downloadID=level"}, 0,
			{"fileName: level.pak\n", "fileSizeInBytes: 1572864\n", "statusCode: 200\n"}, {}},
		{{"call", "nope"}, 2, {}, {"corvane: there is no function 'nope'; 'corvane nodes' lists them all"}},
		{{"call", "createHttpRequestGTE"}, 2, {}, {"there is no function 'createHttpRequestGTE', did you mean 'CreateHttpRequestGET'?"}},
		{{"nodes", "filefunctionscorv.fileSise"}, 2, {}, {"did you mean 'FileFunctionsCorv.fileSize'?"}},
		{{"call", get, "uri=x"}, 2, {}, {"CreateHttpRequestGET: unknown pin 'uri', did you mean 'url'?"}},
		{{"call", get, "url"}, 2, {}, {"'url' is no pin=value"}},
		{{"call", get, "bindServerSendEvent=5"}, 2, {}, {"CreateHttpRequestGET: pin 'bindServerSendEvent': expected bool, got 5"}},
		{{"call", "getCleanDirectory", "directoryType=E_gdd"}, 2, {},
			{"expected EFileFunctionsCorvDirectoryType (E_gd, E_ad), got \"E_gdd\", did you mean 'E_gd'?"}},
		{{"call", get, "otherHttpRequests=[1]"}, 2, {}, {"a httpRequest cannot be written on a command line"}},
		{{}, 2, {}, {"A subcommand is required"}},
		{{"fetch"}, 2, {}, {"corvane: there is no verb 'fetch'\n"}},
		{{"nodes", "--html", "/dev/null/pages"}, 1, {}, {"corvane: "}},
		{{"call", "--project", "/no/such/folder", get}, 2, {}, {"--project"}},
		{{"run"}, 2, {}, {"run needs a script"}},
		{{"run", "--nope", "script.lua"}, 2, {}, {"unknown option --nope"}},
		{{"run", "missing.lua"}, 2, {}, {"there is no script missing.lua"}},
		{{"run", "/usr"}, 2, {}, {"there is no script /usr"}},
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
