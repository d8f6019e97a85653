#include "DemoOrigin.h"
#include "ProcessRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using ::testing::HasSubstr;

namespace
{
	struct Case
	{
		const char* name;
		std::vector<std::string> arguments; // "{url}" stands for the server's
		int status;
		std::vector<std::string> out; // texts that standard output holds; none = it is empty
		std::vector<std::string> err;
	};

	void expectTexts(const std::string& whole, const std::vector<std::string>& parts)
	{
		for (const std::string& part : parts)
		{
			EXPECT_THAT(whole, HasSubstr(part));
		}
		EXPECT_EQ(whole.empty(), parts.empty()) << whole;
	}

	using Texts = std::vector<std::string>;
	const Texts nothing;
	const std::string get = "CorvaneBPLibrary.CreateHttpRequestGET";

	const Case cases[] = {
		{"Get", {"call", get, "url={url}/hello", "optionalRequestID=id"}, 0,
			{"statusCode: 200\n", "dataString: Hello!\n", "byteData: <6 bytes>\n", "requestID: id\n"}, nothing},
		{"NamesInAnyCase", {"call", "createhttprequestget", "URL={url}/hello"}, 0, {"statusCode: 200\n"}, nothing},
		{"RefusedRequest", {"call", get, "url=x"}, 1, {"statusCode: 400\n"}, {"LogTemp: Error: "}},
		{"HeadersAsObject", {"call", get, "url={url}/headers", R"(header={"X-One": "1", "X-Two": "a=b"})"}, 0, {"X-One: 1", "X-Two: a=b"},
			nothing},
		{"PlainFunction", {"call", "getCleanDirectory", "directoryType=E_ad", "filePath=/a/b/../c"}, 0, {"ReturnValue: /a/c\n"}, nothing},
		{"Project", {"call", "--project", "/usr", "getCleanDirectory", "directoryType=E_gd", "filePath=/x"}, 0, {"ReturnValue: /usr/x\n"},
			nothing},
		{"Node", {"call", "AsyncExecuteHTTP_GET_REQUEST", "url={url}/hello", "optionalRequestID=id"}, 0,
			{"statusCode: 200\n", "dataString: Hello!\n", "data: [\"Hello!\"]\n", "requestID: id\n"}, nothing},
		{"NodeRefusedLater", {"call", "AsyncExecuteHTTP_Individual_REQUEST", "url={url}/echo", "optionalRequestID=id"}, 1,
			{"statusCode: 400\n", "requestID: id\n"}, {"LogTemp: Error: "}},
		{"NodeOfAFileOnDrive", {"call", "--drive-base", "{url}", "AsyncExecuteHTTP_GoogleFileInfo_REQUEST", "downloadID=level"}, 0,
			{"fileName: level.pak\n", "fileSizeInBytes: 1572864\n", "statusCode: 200\n"}, nothing},
		{"UnknownFunction", {"call", "nope"}, 2, nothing, {"corvane: there is no function 'nope'; 'corvane nodes' lists them all"}},
		{"MisspeltFunction", {"call", "createHttpRequestGTE"}, 2, nothing,
			{"there is no function 'createHttpRequestGTE', did you mean 'CreateHttpRequestGET'?"}},
		{"MisspeltFunctionOfAClass", {"nodes", "filefunctionscorv.fileSise"}, 2, nothing, {"did you mean 'FileFunctionsCorv.fileSize'?"}},
		{"UnknownPin", {"call", get, "uri=x"}, 2, nothing, {"CreateHttpRequestGET: unknown pin 'uri', did you mean 'url'?"}},
		{"NoPin", {"call", get, "url"}, 2, nothing, {"'url' is no pin=value"}},
		{"WrongValue", {"call", get, "bindServerSendEvent=5"}, 2, nothing, {"pin 'bindServerSendEvent': expected bool, got 5"}},
		{"WrongEnum", {"call", "getCleanDirectory", "directoryType=E_xx"}, 2, nothing,
			{"expected EFileFunctionsCorvDirectoryType (E_gd, E_ad), got \"E_xx\""}},
		{"MisspeltEnum", {"call", "CreateHttpRequestGETDownload", "ActionIfFileExists=E_RESUMEE"}, 2, nothing,
			{", did you mean 'E_RESUME'?"}},
		{"RecordPin", {"call", get, "otherHttpRequests=[1]"}, 2, nothing, {"a httpRequest cannot be written on a command line"}},
		{"NoVerb", {}, 2, nothing, {"A subcommand is required"}},
		{"UnknownVerb", {"fetch"}, 2, nothing, {"corvane: there is no verb 'fetch'\n"}},
		{"NoPlaceForPages", {"nodes", "--html", "/dev/null/pages"}, 1, nothing, {"corvane: "}},
		{"MissingDirectory", {"call", "--project", "/no/such/folder", get}, 2, nothing, {"--project"}},
		{"Help", {"--help"}, 0, {"run", "call", "nodes", "demo"}, nothing},
		{"Nodes", {"nodes"}, 0,
			{"CorvaneBPLibrary.CreateHttpRequestGET  [Corvane|GET]\n    Send a GET HTTP Request to Webserver.\n",
				"  in     header: map of string to string\n", "  out    requestID: string\n",
				"  in     directoryType: EFileFunctionsCorvDirectoryType (E_gd, E_ad)\n",
				"AsyncNodeHttpDownloadUpload.AsyncExecuteHTTP_Download_REQUEST  [Corvane|Download]\n"},
			nothing},
		{"OneNode", {"nodes", "filesize"}, 0,
			{"FileFunctionsCorv.fileSize  [Corvane|File]\n    Return the size of the file in bytes, or -1 if the file does not exist.\n"
			 "  in     directoryType: EFileFunctionsCorvDirectoryType (E_gd, E_ad)\n  in     filePath: string\n  out    ReturnValue: int64\n\n"},
			nothing},
	};
} // namespace

TEST(CommandLine, GivesStatusAndOutput)
{
	const Program::DemoOrigin origin;
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.name);
		std::vector<std::string> words = tested.arguments;
		for (std::string& word : words)
		{
			if (const size_t place = word.find("{url}"); place != std::string::npos)
			{
				word.replace(place, 5, origin.url());
			}
		}
		const ProcessRun run = runProgram(words);
		EXPECT_EQ(run.status, tested.status);
		expectTexts(run.out, tested.out);
		expectTexts(run.err, tested.err);
	}
}

TEST(CommandLineJson, IsOneObjectWithEveryPin)
{
	const Program::DemoOrigin origin;
	const ProcessRun run = runProgram({"call", "--json", get, "url=" + origin.url() + "/hello", "optionalRequestID=id"});
	const auto pins = nlohmann::json::parse(run.out);
	EXPECT_EQ(pins.at("statusCode"), 200);
	EXPECT_EQ(pins.at("byteData"), "SGVsbG8h");
	EXPECT_EQ(pins.at("dataArray"), nlohmann::json::array({"Hello!"}));
	EXPECT_TRUE(pins.at("header").is_array());
}

TEST(NodesJson, TellsWhatAMachineNeedsToCallAFunction)
{
	const auto list = nlohmann::json::parse(runProgram({"nodes", "--json", "CreateHttpRequestGETLowRamDownload"}).out);
	ASSERT_EQ(list.size(), 1u);
	const nlohmann::json& node = list[0];
	EXPECT_EQ(node.at("name"), "CorvaneBPLibrary.CreateHttpRequestGETLowRamDownload");
	EXPECT_EQ(node.at("kind"), "callable");
	EXPECT_THAT(node.at("examples"), ::testing::Contains("11-large-file-in-steps.lua"));

	nlohmann::json pins;
	for (const nlohmann::json& pin : node.at("pins"))
	{
		pins[pin.at("name")] = pin;
	}
	EXPECT_EQ(pins["FileSizeStepsInBytes"].at("default"), "10485760");
	EXPECT_EQ(pins["ActionIfFileExists"].at("values"), nlohmann::json({{"E_OVERWRITE", 0}, {"E_NOT_OVERWRITE", 1}, {"E_RESUME", 2}}));
	EXPECT_EQ(pins["header"].at("mayStayUnconnected"), true);
	EXPECT_EQ(pins["url"].at("mayStayUnconnected"), false);
	EXPECT_EQ(pins["ReturnValue"].at("direction"), "out");
	EXPECT_GT(nlohmann::json::parse(runProgram({"nodes", "--json"}).out).size(), 50u);
}

TEST(Demo, RunsEveryExample)
{
	const ProcessRun run = runProgram({"demo"});
	EXPECT_EQ(run.status, 0) << run.err;
	EXPECT_THAT(run.out, HasSubstr("== 01-get.lua: A GET request"));
	EXPECT_THAT(run.out, ::testing::EndsWith("All examples ran.\n"));
}
