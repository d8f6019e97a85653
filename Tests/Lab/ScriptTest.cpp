#include "Lab/Script.h"
#include "Client.h"
#include "Lab/Origin.h"
#include "TempDir.h"

#include <gmock/gmock.h>

#include <optional>

TEST(LabScript, SaysWhatIsWrongAndWhere)
{
	const struct
	{
		const char* script;
		const char* fault;
	} cases[] = {
		{"lab.at(", "lab:1: unexpected symbol near <eof>"},
		{"\nlab.drop{ aftr = 1 }", "lab:2: drop: there is no option 'aftr', only after, resets, requests, chance and seed"},
		{"lab.at('/', lab.rate{ bytes = 'x' })", "lab:1: rate: bytes has to be a number that is not negative"},
		{"lab.at('/', 5)", "lab:1: a number is no behaviour"},
		{"lab.inTurn{}", "lab:1: inTurn needs a behaviour at least"},
		{"lab.file{ bytes = print }", "lab:1: a function is no value for an option"},
		{"lab.raw{ 'a', ending = 'close' }", "lab:1: a table is a list or has names, not both"},
		{"local t = {} t.a = t lab.text(t)", "lab:1: a table is too deep"},
		{"lab.file{ path = '/none' }", "lab:1: /none: No such file or directory"},
	};
	Lab::Origin origin;
	Lab::Script script(origin);
	for (const auto& [text, fault] : cases)
	{
		try
		{
			script.runText(text);
			ADD_FAILURE() << text;
		}
		catch (const std::runtime_error& error)
		{
			EXPECT_STREQ(error.what(), fault);
		}
	}
}

TEST(LabScript, AnswersAsLongAsItLives)
{
	const TempDir directory;
	std::string complaint;
	Lab::Origin origin({.complain = [&](const std::string& text) { complaint = text; }});
	std::optional<Lab::Script> script(origin);
	script->runFile(directory.write("lab.lua", R"lua(
		local name = arg[1]
		lab.at("/name", function(request) return lab.text(name .. #lab.log()) end)
		lab.at("/form", function(request) return request.form[2].name .. request.form[2].bytes end)
		lab.at("/wrong", function() error("wrong") end)
	)lua"),
		{"given"});
	EXPECT_EQ(ask(origin.url("/name")).body, "given0");
	EXPECT_EQ(ask(origin.url("/name")).body, "given1");
	EXPECT_EQ(ask(origin.url("/form"), {.body = "a=b&c=d+%26"}).body, "cd &");
	EXPECT_EQ(ask(origin.url("/wrong")).status, 500);
	EXPECT_THAT(complaint, ::testing::EndsWith("lab.lua:5: wrong"));
	script.reset();
	EXPECT_EQ(ask(origin.url("/name")).status, 500);
}
