#include "ScriptFixture.h"

namespace
{
	const char* const conversionCases[] = {
		"for _, flag in ipairs{ true, false } do same(echo{ flag = flag }.flag, flag) end",
		"for _, n in ipairs{ 0, 255 } do same(echo{ small = n }.small, n) end",
		"for _, n in ipairs{ -2147483648, 2147483647 } do same(echo{ number = n }.number, n) end",
		"for _, n in ipairs{ math.mininteger, math.maxinteger } do same(echo{ big = n }.big, n) end",
		"same(echo{ number = 3.0 }.number, 3) same(echo{ big = 2.0^53 }.big, 1 << 53)",
		"for _, r in ipairs{ 0.25, 2.0, 1/0 } do same(echo{ ratio = r }.ratio, r) end same(echo{ ratio = 2 }.ratio, 2.0)",
		R"(for _, s in ipairs{ "", "h\u{e9}\u{20ac}\u{1F600}", "zero\0inside" } do same(echo{ text = s }.text, s) end)",
		R"(same(echo{ text = "a\xFFb\xC3" }.text, "a\u{FFFD}b\u{FFFD}"))",
		R"(for _, t in ipairs{ "0001-01-01T00:00:00.000Z", "2024-02-29T12:34:56.789Z", "9999-12-31T23:59:59.999Z" } do
				same(echo{ moment = t }.moment, t)
			end)",
		R"(same(echo{ colour = ESampleColour.Green }.colour, 5) same(echo{ colour = "blue" }.colour, 6))",
		R"(for round = 1, 100 do -- the same object is the same value, also when memory is used again
				local target = SampleLibrary.getTarget().ReturnValue
				same(echo{ object = target }.object, target)
				assert(SampleLibrary.makeObject().ReturnValue ~= target)
				tick()
				collectgarbage()
			end)",
		R"(same(echo{ texts = { "b", "a" }, numbers = { 1, -2 } }, { texts = { "b", "a" }, numbers = { 1, -2 }, flag = false,
			small = 0, number = 0, big = 0, ratio = 0.0, text = "", colour = 0, bytes = "", map = {}, counts = {},
			moment = "0001-01-01T00:00:00.000Z" }))",
		R"(same(echo{ bytes = "\0\xFF\xC3" }.bytes, "\0\xFF\xC3"))",
		R"(same(echo{ map = { a = "1", B = "2" } }.map, { a = "1", B = "2" }) same(echo{ counts = { { "n", 5 } } }.counts, { n = 5 }))",
		R"(local map = {} for _, k in ipairs{ "b", "\u{e9}", "a1", "a", "Z9" } do map[k .. "x"] = k end
			same(SampleLibrary.describeMap{ map = map }.ReturnValue, "Z9x=Z9;a1x=a1;ax=a;bx=b;\u{e9}x=\u{e9};"))",
		R"(same(SampleLibrary.describeMap{ map = { { "z", "1" }, { "a", "2" } } }.ReturnValue, "z=1;a=2;"))",
		R"(-- lists of records never change, whatever grows out of them
			local function add(others, text) return SampleLibrary.addRecord{ others = others, text = text }.records end
			local function texts(records) return SampleLibrary.textsOf{ records = records }.ReturnValue end
			local one = add({}, "a")
			local two = add(one, "b")
			same(texts(two), "ab") same(texts(one), "a") same(texts(add(one, "c")), "ac") same(texts(add(two, "d")), "abd")
			same(#add(two, ""), 0) same(texts(two), "ab") same(#two, 2) same(two[3], nil)
			same(texts{ two[2], table.unpack(one) }, "ba") same(texts(add({ two[2] }, "e")), "be")
			local all = "" for place, record in pairs(two) do all = all .. place .. texts{ record } end same(all, "1a2b"))",
		R"(same(SampleLibrary.describeDefaults().ReturnValue, "1|7|10485760|-5|2.5|a \"b\"|6|1")
			same(SampleLibrary.describeDefaults{ flag = false, text = "" }.ReturnValue, "0|7|10485760|-5|2.5||6|1"))",
		R"(-- a struct is a table of its fields, and those that are not given have their defaults
			local options = SampleLibrary.echoOptions{ options = { attempts = 5, Colour = "green", Headers = { a = "1" } } }.ReturnValue
			same(options, { Attempts = 5, Hash = "none", Colour = 5, Headers = { a = "1" } }) same(options.HASH, "none")
			same(SampleLibrary.echoOptions{ options = options }.ReturnValue, options)
			same(SampleLibrary.echoOptions().ReturnValue.Attempts, 3))",
		"same(samplelibrary, nil) same(SampleLibrary.ECHO{ NUMBER = 4 }.number, 4)",
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
		local echo = SampleLibrary.echo
	)lua";
	runEach(conversionCases, start);
}
