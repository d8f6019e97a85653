#include "ScriptFixture.h"

namespace
{
	const char* const jsonCases[] = {
		R"lua( -- what goes in comes out
			local text = [=[{"big":9223372036854775807,"deep":[[],{},[{"a":null}]],"flag":false,"least":-9223372036854775808,"ratio":2.0,]=] ..
				[["text":"\u0001\"h\u00e9\ud83d\ude00"}]]
			local value = json.decode(text)
			assert(value.big == math.maxinteger and value.least == math.mininteger and math.type(value.ratio) == "float")
			assert(value.text == "\1\"h\u{e9}\u{1F600}" and value.deep[3][1].a == json.null and tostring(json.null) == "null")
			local again = json.encode(value)
			assert(again == text:gsub("\\u00e9", "\u{e9}"):gsub("\\ud83d\\ude00", "\u{1F600}"), again)
			assert(json.decode("18446744073709551615") == 2.0^64)
		)lua",
		R"lua( -- lists are what has places, what the call says, and what was a list before
			assert(json.encode{ 1, json.null } == "[1,null]" and json.encode{} == "{}" and json.encode(json.array{}) == "[]")
			assert(json.encode(SampleLibrary.echo{ text = "x" }):find('"colour":0,"counts":{}', 1, true))
			assert(json.encode(SampleLibrary.echo().texts) == "[]" and json.encode(nil) == "null")
		)lua",
	};

	const struct
	{
		const char* script;
		const char* message; // how it begins
	} faults[] = {
		{"json.encode{ a = { 1, print } }", "json.encode: key 'a': element 2: JSON has no function"},
		{"json.encode{ [1] = 1, a = 2 }", "json.encode: a list that also has the key 'a'"},
		{"json.encode{ 1, nil, 3 }", "json.encode: a list with a gap; json.null fills it"},
		{"json.encode{ [true] = 1 }", "json.encode: keys of an object are text, not true"},
		{"json.encode{ 0/0 }", "json.encode: element 1: JSON has no number"},
		{"json.encode{ text = 'a\\xff' }", "json.encode: key 'text': text that is not UTF-8"},
		{"local t = { b = {} } t.b.c = t json.encode(t)", "json.encode: key 'b': key 'c': a table that holds itself"},
		{"local t = {} for _ = 1, 1e5 do t = { t } end json.encode(t)", "json.encode: more than 500 tables in each other"},
		{"json.decode(string.rep('[', 1e6))", "json.decode: more than 500 lists and objects in each other"},
		{"json.decode('{\"a\":\\n tru}')", "json.decode: parse error at line 2, column 5"},
		{"json.decode('\"\\xff\"')", "json.decode: parse error at line 1, column 2"},
	};

	using JsonFunctions = ScriptFixture;
} // namespace

TEST_F(JsonFunctions, KeepValues)
{
	runEach(jsonCases);
}

TEST_F(JsonFunctions, SayWhatIsWrongAndWhere)
{
	for (const auto& [text, message] : faults)
	{
		EXPECT_THAT(runBad(text), ::testing::StartsWith(std::string("script:1: ") + message));
	}
}
