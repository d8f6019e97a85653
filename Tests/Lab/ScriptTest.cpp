#include "Lab/Script/Script.h"
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

TEST(LabScript, KeepsWhatCameOfABrokenUpload)
{
	Lab::Origin origin;
	Lab::Script script(origin);
	script.runText(R"lua(
		local server = lab.tus()
		lab.at("/files*", server)
		lab.at("PATCH /files*", server, lab.upload{ hangsUpAfter = 4, requests = 1 })
	)lua");
	EXPECT_THAT(ask(origin.url("/files"), {{"Upload-Length: 10"}, "POST", "-"}).head, ::testing::HasSubstr("Location: /files/1\r\n"));
	const std::string upload = origin.url("/files/1");
	ask(upload, {{"Upload-Offset: 0"}, "PATCH", "0123456789"});
	EXPECT_THAT(ask(upload, {.method = "HEAD"}).head, ::testing::HasSubstr("Upload-Offset: 4\r\n"));
	EXPECT_EQ(ask(upload, {{"Upload-Offset: 0"}, "PATCH", "0123456789"}).status, 409);
	converse(origin.port(), "PATCH /files/1 HTTP/1.0\r\nUpload-Offset: 4\r\nContent-Length: 2\r\n\r\n45");
	EXPECT_EQ(ask(upload, {{"Upload-Offset: 6"}, "PATCH", "6789"}).status, 204);
	EXPECT_EQ(ask(upload).body, "0123456789");
	EXPECT_EQ(ask(origin.url("/files/2")).status, 404);
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
