#include "ScriptFixture.h"

namespace
{
	struct Case
	{
		const char* script;
		const char* message; // without the place "script:1: "
	};

	const Case cases[] = {
		{"SampleLibrary.raise{ txt = 'x' }", "SampleLibrary.raise: unknown pin 'txt' (it has: text, later)"},
		{"SampleLibrary.raise{ 'x' }", "SampleLibrary.raise: pins are given by name: { name = value }"},
		{"SampleLibrary.raise('x')", "SampleLibrary.raise: takes one table of pins: { name = value }"},
		{"SampleLibrary.rise{}", "SampleLibrary has no function 'rise', did you mean 'raise'?"},
		{"SampleLibrary.notForScripts()", "SampleLibrary has no function 'notForScripts'"},
		{"local x = ESampleColour.Grene", "ESampleColour has no value 'Grene', did you mean 'Green'?"},

		{"SampleLibrary.echoPlain{ inFlag = 1 }", "SampleLibrary.echoPlain: pin 'inFlag': expected bool, got 1"},
		{"SampleLibrary.echoPlain{ inSmall = 256 }", "SampleLibrary.echoPlain: pin 'inSmall': expected uint8 (0 to 255), got 256"},
		{"SampleLibrary.echoPlain{ inNumber = 2147483648 }",
			"SampleLibrary.echoPlain: pin 'inNumber': expected int32 (-2147483648 to 2147483647), got 2147483648"},
		{"SampleLibrary.echoPlain{ inBig = 1.5 }", "SampleLibrary.echoPlain: pin 'inBig': expected int64 (a whole number), got 1.5"},
		{"SampleLibrary.echoPlain{ inBig = 2.0^63 }",
			"SampleLibrary.echoPlain: pin 'inBig': expected int64 (a whole number), got 9.2233720368548e+18"},
		{"SampleLibrary.echoPlain{ inText = 5 }", "SampleLibrary.echoPlain: pin 'inText': expected string, got 5"},
		{"SampleLibrary.echoPlain{ inColour = 'pink' }",
			"SampleLibrary.echoPlain: pin 'inColour': expected ESampleColour (Red, Green, Blue), got string 'pink'"},
		{"SampleLibrary.echoPlain{ inObject = SampleNode.startNode() }",
			"SampleLibrary.echoPlain: pin 'inObject': expected SampleLibrary object, got userdata"},

		{"SampleLibrary.echoTime{ moment = 0 }",
			"SampleLibrary.echoTime: pin 'moment': expected FDateTime (YYYY-MM-DDThh:mm:ss.mmmZ), got 0"},
		{"SampleLibrary.echoTime{ moment = '2024-02-30T00:00:00.000Z' }",
			"SampleLibrary.echoTime: pin 'moment': expected FDateTime (YYYY-MM-DDThh:mm:ss.mmmZ), got string '2024-02-30T00:00:00.000Z'"},
		{"SampleLibrary.echoTime{ list = { '2024-02-29' } }",
			"SampleLibrary.echoTime: pin 'list': element 1: expected FDateTime (YYYY-MM-DDThh:mm:ss.mmmZ), got string '2024-02-29'"},

		{"SampleLibrary.echoContainers{ inTexts = 'a' }",
			"SampleLibrary.echoContainers: pin 'inTexts': expected list of string, got string 'a'"},
		{"SampleLibrary.echoContainers{ inTexts = { 'a', 2 } }",
			"SampleLibrary.echoContainers: pin 'inTexts': element 2: expected string, got 2"},
		{"SampleLibrary.echoContainers{ inTexts = { 'a', key = 'b' } }",
			"SampleLibrary.echoContainers: pin 'inTexts': expected a list, got a table with the key 'key'"},
		{"SampleLibrary.echoContainers{ inBytes = { 1 } }", "SampleLibrary.echoContainers: pin 'inBytes': expected bytes, got table"},
		{"SampleLibrary.echoContainers{ inMap = 'a' }",
			"SampleLibrary.echoContainers: pin 'inMap': expected map of string to string, got string 'a'"},
		{"SampleLibrary.echoContainers{ inMap = { a = 1 } }",
			"SampleLibrary.echoContainers: pin 'inMap': value of key 'a': expected string, got 1"},
		{"SampleLibrary.echoContainers{ inMap = { 'a' } }", "SampleLibrary.echoContainers: pin 'inMap': key: expected string, got 1"},
		{"SampleLibrary.echoContainers{ inMap = { [true] = 'a' } }",
			"SampleLibrary.echoContainers: pin 'inMap': expected map of string to string, got table"},
		{"SampleLibrary.echoContainers{ inMap = { { 'a', 'b' }, 'c' } }",
			"SampleLibrary.echoContainers: pin 'inMap': pair 2: expected {key, value}"},
		{"SampleLibrary.recordTexts{ records = SampleLibrary.makeForeignRecord().records }",
			"SampleLibrary.recordTexts: pin 'records': element 1: expected SampleRecord, got userdata"},

		{"local x = SampleLibrary.addRecord{}.records[1].text", "records of type SampleRecord have no fields that scripts may touch"},
		{"SampleLibrary.getTarget().ReturnValue.onSampel:Add(print)", "SampleLibrary has no event 'onSampel'"},
		{"SampleLibrary.getTarget().ReturnValue.onSample = print", "SampleLibrary has no field that scripts may set"},
		{"SampleLibrary.getTarget().ReturnValue.onSample:Add(5)", "bad argument #1 to 'Add' (function expected, got number)"},
		{"SampleNode.startNode{ OnSuccess = 1 }", "SampleNode.startNode: pin 'OnSuccess': expected function, got number"},
		{"SampleNode.startNode{ OnWin = print }",
			"SampleNode.startNode: unknown pin 'OnWin' (it has: statusCode, requestID, immediately, OnSuccess, OnFail)"},
		{"wait(5, 1)", "bad argument #1 to 'wait' (function expected, got number)"},
	};

	using ErrorText = ScriptFixture;
} // namespace

TEST_F(ErrorText, NamesFunctionPinAndExpectedType)
{
	for (const Case& each : cases)
	{
		renew();
		EXPECT_EQ(runBad(each.script), std::string("script:1: ") + each.message);
	}
	renew();
	// A table has no order, so either spelling may be met first.
	EXPECT_THAT(runBad("SampleLibrary.raise{ text = 'x', TEXT = 'y' }"), ::testing::EndsWith("is given twice, in different spelling"));
}
