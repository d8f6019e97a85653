#include "DemoOrigin.h"
#include "ProcessRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <ostream>

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

	void PrintTo(const Case& tested, std::ostream* stream)
	{
		*stream << tested.name;
	}

	class CommandLine : public ::testing::TestWithParam<Case>
	{
	protected:
		Program::DemoOrigin origin;

		std::vector<std::string> arguments() const
		{
			std::vector<std::string> words = GetParam().arguments;
			for (std::string& word : words)
			{
				if (const size_t place = word.find("{url}"); place != std::string::npos)
				{
					word.replace(place, 5, origin.url());
				}
			}
			return words;
		}
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
		{"MissingPage", {"call", get, "url={url}/nothing"}, 1, {"statusCode: 404\n"}, nothing},
		{"RefusedRequest", {"call", get, "url=x"}, 1, {"statusCode: 400\n"}, {"LogTemp: Error: "}},
		{"HeadersAsObject", {"call", get, "url={url}/headers", R"(header={"X-One": "1", "X-Two": "a=b"})"}, 0, {"X-One: 1", "X-Two: a=b"},
			nothing},
		{"HeadersAsPairs", {"call", get, "url={url}/headers", R"(header=[["X-One", "1"]])"}, 0, {"X-One: 1"}, nothing},
		{"PlainFunction", {"call", "getCleanDirectory", "directoryType=E_ad", "filePath=/a/b/../c"}, 0, {"ReturnValue: /a/c\n"}, nothing},
		{"EnumByNumber", {"call", "--json", "getCleanDirectory", "directoryType=1", "filePath=/a"}, 0, {"{\"ReturnValue\":\"/a\"}\n"},
			nothing},
		{"Project", {"call", "--project", "/usr", "getCleanDirectory", "directoryType=E_gd", "filePath=/x"}, 0, {"ReturnValue: /usr/x\n"},
			nothing},
		{"UnknownFunction", {"call", "nope"}, 2, nothing, {"corvane: there is no function 'nope'"}},
		{"UnknownPin", {"call", get, "uri=x"}, 2, nothing, {"CreateHttpRequestGET: unknown pin 'uri'"}},
		{"NoPin", {"call", get, "url"}, 2, nothing, {"'url' is no pin=value"}},
		{"WrongValue", {"call", get, "bindServerSendEvent=5"}, 2, nothing, {"pin 'bindServerSendEvent': expected bool, got 5"}},
		{"WrongEnum", {"call", "getCleanDirectory", "directoryType=E_xx"}, 2, nothing,
			{"expected EFileFunctionsCorvDirectoryType (E_gd, E_ad)"}},
		{"RecordPin", {"call", get, "otherHttpRequests=[1]"}, 2, nothing, {"a httpRequest cannot be written on a command line"}},
		{"NoVerb", {}, 2, nothing, {"A subcommand is required"}},
		{"UnknownVerb", {"fetch"}, 2, nothing, {"A subcommand is required"}},
		{"TooManyWords", {"nodes", "more"}, 2, nothing, {"more"}},
		{"MissingDirectory", {"call", "--project", "/no/such/folder", get}, 2, nothing, {"--project"}},
		{"Help", {"--help"}, 0, {"run", "call", "nodes", "demo"}, nothing},
		{"Nodes", {"nodes"}, 0,
			{"CorvaneBPLibrary.CreateHttpRequestGET  [Corvane|GET]\n    Send a GET HTTP Request to Webserver.\n",
				"  in     header: map of string to string\n", "  out    requestID: string\n",
				"  in     directoryType: EFileFunctionsCorvDirectoryType (E_gd, E_ad)\n"},
			nothing},
	};
} // namespace

TEST_P(CommandLine, GivesStatusAndOutput)
{
	const ProcessRun run = runProgram(arguments());
	EXPECT_EQ(run.status, GetParam().status);
	expectTexts(run.out, GetParam().out);
	expectTexts(run.err, GetParam().err);
}

INSTANTIATE_TEST_SUITE_P(Cases, CommandLine, ::testing::ValuesIn(cases), [](const auto& test) { return std::string(test.param.name); });

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

TEST(Demo, RunsEveryExample)
{
	const ProcessRun run = runProgram({"demo"});
	EXPECT_EQ(run.status, 0) << run.err;
	EXPECT_THAT(run.out, HasSubstr("== 1-get.lua: A GET request"));
	EXPECT_THAT(run.out, ::testing::EndsWith("All examples ran.\n"));
}
