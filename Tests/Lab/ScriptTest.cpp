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
	EXPECT_EQ(ask(upload, {.method = "DELETE"}).status, 204);
	EXPECT_EQ(ask(upload).status, 404);
}

TEST(LabScript, TakesUploadsWithTheirSumsAsLongAsTheyLast)
{
	Lab::Origin origin;
	Lab::Script script(origin);
	script.runText(R"lua(
		lab.at("/files*", lab.tus{ tells = true, mostBytes = 10, host = "localhost" })
		lab.at("/short*", lab.tus{ expiresAfter = 0 })
	)lua");
	const std::string bytes = "Content-Type: application/offset+octet-stream";
	const std::string sum = "Upload-Checksum: sha1 gf6L/odXbD7LIkJvjleEc4KRes8="; // of "abcd", reckoned elsewhere
	EXPECT_EQ(ask(origin.url("/files"), {{"Upload-Length: 11"}, "POST", "-"}).status, 413);
	EXPECT_THAT(ask(origin.url("/files"), {{"Upload-Length: 8", bytes}, "POST", "1234"}).head,
		::testing::AllOf(::testing::HasSubstr("Location: http://localhost:" + std::to_string(origin.port()) + "/files/1\r\n"),
			::testing::HasSubstr("Upload-Offset: 4\r\n"), ::testing::HasSubstr("checksum")));
	const std::string upload = origin.url("/files/1");
	EXPECT_EQ(ask(upload, {{"Upload-Offset: 4", sum}, "PATCH", "abce"}).status, 460);
	EXPECT_EQ(ask(upload, {{"Upload-Offset: 4", sum}, "PATCH", "abcd"}).status, 204);
	EXPECT_EQ(ask(upload).body, "1234abcd");
	EXPECT_THAT(ask(origin.url("/short"), {{"Upload-Length: 8"}, "POST", "-"}).head, ::testing::HasSubstr("Upload-Expires: "));
	EXPECT_EQ(ask(origin.url("/short/1"), {.method = "HEAD"}).status, 410);
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
