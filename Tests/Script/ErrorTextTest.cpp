#include "ScriptFixture.h"

namespace
{
	struct Case
	{
		const char* script;
		const char* message; // without the place "script:1: "
	};

	const Case errorCases[] = {
		{"SampleLibrary.raise{ txt = 'x' }", "SampleLibrary.raise: unknown pin 'txt' (it has: text, later)"},
		{"SampleLibrary.raise{ 'x' }", "SampleLibrary.raise: pins are given by name: { name = value }"},
		{"SampleLibrary.raise('x')", "SampleLibrary.raise: takes one table of pins: { name = value }"},
		{"SampleLibrary.rise{}", "SampleLibrary has no function 'rise', did you mean 'raise'?"},
		{"SampleLibrary.notForScripts()", "SampleLibrary has no function 'notForScripts'"},
		{"local x = ESampleColour.Grene", "ESampleColour has no value 'Grene', did you mean 'Green'?"},
		{"local x = SampleLibrary.addRecord{ text = 'x' }.records[1].text",
			"records of type SampleRecord have no fields that scripts may touch"},
		{"SampleLibrary.addRecord{ text = 'x' }.records[2] = 1",
			"a list of records does not change; { table.unpack(list) } makes a table of them"},
		{"local x = SampleLibrary.echo().txet", "SampleLibrary.echo has no output pin 'txet', did you mean 'text'?"},
		{"event:Add(function(e) return e.unknown end) SampleLibrary.raise()",
			"event onSample has no output pin 'unknown' (it has: text, list, bytes, big)"},
		{"SampleLibrary.getTarget().ReturnValue.onSampel:Add(print)",
			"SampleLibrary has no event or function 'onSampel', did you mean 'onSample'?"},
		{"SampleLibrary.getTarget().ReturnValue.onSample = print", "SampleLibrary has no field that scripts may set"},
		{"local x = SampleNode.startNode():descirbe()", "SampleNode has no event or function 'descirbe', did you mean 'describe'?"},
		{"SampleNode.startNode().describe{ factor = 2 }", "SampleNode.describe: is called with a colon: object:describe()"},
		{"SampleNode.startNode():describe{ by = 2 }", "SampleNode.describe: unknown pin 'by' (it has: factor)"},
		{"SampleLibrary.echoOptions{ options = { Atempts = 1 } }",
			"SampleLibrary.echoOptions: pin 'options': key: SampleOptions has no field 'Atempts', did you mean 'Attempts'?"},
		{"SampleLibrary.echoOptions{ options = { Attempts = 'x' } }", "SampleLibrary.echoOptions: pin 'options': value of key 'Attempts': "
																	  "expected int32 (-2147483648 to 2147483647), got string 'x'"},
		{"local x = SampleLibrary.echoOptions().ReturnValue.Hahs", "SampleOptions has no field 'Hahs', did you mean 'Hash'?"},
		{"event:Add(5)", "bad argument #1 to 'Add' (function expected, got number)"},
		{"SampleNode.startNode{ OnSuccess = 1 }", "SampleNode.startNode: pin 'OnSuccess': expected function, got number"},
		{"SampleNode.startNode{ OnWin = print }",
			"SampleNode.startNode: unknown pin 'OnWin' (it has: statusCode, requestID, OnSuccess, OnFail)"},
	};

	/** What is wrong with a value, after "SampleLibrary.echo: pin ". */
	const Case values[] = {
		{"flag = 1", "'flag': expected bool, got 1"},
		{"small = 256", "'small': expected uint8 (0 to 255), got 256"},
		{"number = 2147483648", "'number': expected int32 (-2147483648 to 2147483647), got 2147483648"},
		{"big = 2.0^63", "'big': expected int64 (a whole number), got 9.2233720368548e+18"},
		{"ratio = 1e39", "'ratio': expected float, got 1e+39"},
		{"text = 5", "'text': expected string, got 5"},
		{"colour = 'pink'", "'colour': expected ESampleColour (Red, Green, Blue), got string 'pink'"},
		{"colour = 4", "'colour': expected ESampleColour (Red, Green, Blue), got 4"},
		{"object = SampleNode.startNode()", "'object': expected SampleLibrary object, got SampleNode object"},
		{"moment = '2024-02-30T00:00:00.000Z'",
			"'moment': expected FDateTime (YYYY-MM-DDThh:mm:ss.mmmZ), got string '2024-02-30T00:00:00.000Z'"},
		{"texts = string.rep('a', 41)", "'texts': expected list of string, got string"},
		{"texts = { 'a', 2 }", "'texts': element 2: expected string, got 2"},
		{"texts = { 'a', key = 'b' }", "'texts': expected a list, got a table with the key 'key'"},
		{"bytes = { 1 }", "'bytes': expected bytes, got table"},
		{"map = { a = 1 }", "'map': value of key 'a': expected string, got 1"},
		{"map = { 'a' }", "'map': key: expected string, got 1"},
		{"map = { [true] = 'a' }", "'map': expected map of string to string, got table"},
		{"map = { { 'a', 'b' }, 'c' }", "'map': pair 2: expected {key, value}"},
	};

	using ErrorText = ScriptFixture;
} // namespace

TEST_F(ErrorText, NamesFunctionPinAndExpectedType)
{
	for (const Case& each : errorCases)
	{
		EXPECT_EQ(runBad(each.script), std::string("script:1: ") + each.message);
	}
	for (const Case& each : values)
	{
		EXPECT_EQ(runBad(std::string("SampleLibrary.echo{ ") + each.script + " }"),
			std::string("script:1: SampleLibrary.echo: pin ") + each.message);
	}
	EXPECT_EQ(runBad("SampleLibrary.textsOf{ records = SampleLibrary.addForeignRecord().records }"),
		"script:1: SampleLibrary.textsOf: pin 'records': expected list of SampleRecord, got list of ForeignRecord");
	EXPECT_EQ(runBad("SampleLibrary.textsOf{ records = { SampleLibrary.addForeignRecord().records[1] } }"),
		"script:1: SampleLibrary.textsOf: pin 'records': element 1: expected SampleRecord, got ForeignRecord record");
	// A table has no order, so either spelling may be met first.
	EXPECT_THAT(runBad("SampleLibrary.raise{ text = 'x', TEXT = 'y' }"), ::testing::EndsWith("is given twice, in different spelling"));
	EXPECT_EQ(runBad("\x1bLua"), "attempt to load a binary chunk (mode is 't')");
}
