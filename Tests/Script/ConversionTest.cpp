#include "ScriptFixture.h"

namespace
{
	const char* const cases[] = {
		"same(plain{ inFlag = true }.flag, true) same(plain{ inFlag = false }.flag, false) same(plain().flag, false)",
		"for _, n in ipairs{ 0, 255 } do same(plain{ inSmall = n }.small, n) end",
		"for _, n in ipairs{ -2147483648, 2147483647 } do same(plain{ inNumber = n }.number, n) end",
		"same(plain{ inNumber = 3.0 }.number, 3) same(plain{ inBig = 2.0^53 }.big, 1 << 53)",
		"for _, n in ipairs{ math.mininteger, math.maxinteger } do same(plain{ inBig = n }.big, n) end",
		"same(plain{ inRatio = 0.25 }.ratio, 0.25) same(plain{ inRatio = 2 }.ratio, 2.0)",
		"same(plain{ inRatio = 1/0 }.ratio, 1/0)",
		R"(for _, s in ipairs{ "", "h\u{e9}\u{20ac}\u{1F600}", "zero\0inside" } do same(plain{ inText = s }.text, s) end)",
		R"(same(plain{ inText = "a\xFFb\xC3" }.text, "a\u{FFFD}b\u{FFFD}"))",
		R"(local time = SampleLibrary.echoTime
			for _, t in ipairs{ "0001-01-01T00:00:00.000Z", "2024-02-29T12:34:56.789Z", "9999-12-31T23:59:59.999Z" } do
				same(time{ moment = t }.ReturnValue, t)
			end
			same(time().ReturnValue, "0001-01-01T00:00:00.000Z")
			same(time{ moment = "2024-01-01T00:00:00.000Z", list = { "1970-01-01T00:00:00.001Z" } }.list,
				{ "2024-01-01T00:00:00.000Z", "1970-01-01T00:00:00.001Z" }))",
		R"(same(plain{ inColour = ESampleColour.Green }.colour, 5) same(plain{ inColour = "blue" }.colour, 6))",
		R"(local t = SampleLibrary.getTarget().ReturnValue
			same(plain{ inObject = t }.object, t) same(plain{}.object, nil))",
		R"(same(containers{ inTexts = { "b", "a" } }.texts, { "b", "a" }) same(containers{ inNumbers = {} }.numbers, {})
			same(containers{ inNumbers = { 1, -2 } }.numbers, { 1, -2 }))",
		R"(same(containers{ inBytes = "\0\xFF\xC3" }.bytes, "\0\xFF\xC3") same(containers().bytes, ""))",
		R"(same(containers{ inMap = { a = "1", B = "2" } }.map, { a = "1", B = "2" }) same(containers{ inMap = {} }.map, {})
			same(containers{ inCounts = { { "n", 5 } } }.counts, { n = 5 }))",
		R"(local map = {} for _, k in ipairs{ "b", "\u{e9}", "a1", "a", "Z9" } do map[k .. "x"] = k end
			same(SampleLibrary.describeMap{ map = map }.ReturnValue, "Z9x=Z9;a1x=a1;ax=a;bx=b;\u{e9}x=\u{e9};"))",
		R"(same(SampleLibrary.describeMap{ map = { { "z", "1" }, { "a", "2" } } }.ReturnValue, "z=1;a=2;"))",
		R"(local records = SampleLibrary.addRecord{ text = "one" }.records
			records = SampleLibrary.addRecord{ text = "two", otherRecords = records }.records
			same(SampleLibrary.recordTexts{ records = { records[2], records[1] } }.ReturnValue, { "two", "one" }))",
		R"(same(SampleLibrary.describeDefaults().ReturnValue, "1|7|10485760|-5|2.5|a \"b\"|6")
			same(SampleLibrary.describeDefaults{ flag = false, text = "" }.ReturnValue, "0|7|10485760|-5|2.5||6"))",
		R"(local first = SampleLibrary.appendText{ text = "a" }
			same(first, { list = { "a" }, count = 1 })
			same(SampleLibrary.appendText{ text = "b", list = first.list, count = 41 }, { list = { "a", "b" }, count = 42 }))",
		"same(samplelibrary, nil) same(SampleLibrary.ECHOPLAIN{ INNUMBER = 4 }.number, 4)",
		"same(ESampleColour, { Red = 0, Green = 5, Blue = 6 }) same(ESampleColour.green, 5)",
	};

	using Conversion = ScriptFixture;
} // namespace

TEST_F(Conversion, KeepsTheValueBothWays)
{
	const std::string start = R"lua(
		function same(got, wanted)
			if type(wanted) == "table" then
				for key, value in pairs(wanted) do same(got[key], value) end
				for key in pairs(got) do assert(wanted[key] ~= nil, key) end
			else
				assert(got == wanted and math.type(got) == math.type(wanted), tostring(got) .. " instead of " .. tostring(wanted))
			end
		end
		local plain, containers = SampleLibrary.echoPlain, SampleLibrary.echoContainers
	)lua";
	for (const char* each : cases)
	{
		runGood(start + each);
	}
}
