#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Tus.h"
#include "Lab/Behaviours/Uploads.h"
#include "Lab/Origin.h"
#include "ProcessRun.h"
#include "TempDir.h"
#include "Waiting.h"

#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>

using ::testing::HasSubstr;
using ::testing::Matcher;
using ::testing::MatchesRegex;

TEST(Put, SendsFilesWhereTheyBelongAndTellsTheirEnd)
{
	struct Case
	{
		const char* words; // $u is the address of a server
		int status;
		Matcher<const std::string&> out;
		Matcher<const std::string&> err;
		std::vector<std::string> requests; // method, target, type and size of each
	};
	const std::string none;
	const Case cases[] = {
		{"a.png $u/size", 0, "a.png: It is uploaded; the server answered with status 200.\n6\n", none, {"PUT /size image/png 6"}},
		{"a.png 'sub/b c' \"$u/size/?key=1\" --hash md5", 0, HasSubstr("a.png: It is uploaded; the server answered with status 200. e80b5"),
			none, {"PUT /size/a.png?key=1 image/png 6", "PUT /size/b%20c?key=1 application/octet-stream 2"}},
		{"-q -X post a.png $u/size -H 'Content-Type: x/y'", 0, none, none, {"POST /size x/y 6"}},
		{"a.png 'sub/b c' $u/form --form f --field 'n=v=w' --field e=", 0,
			MatchesRegex(R"(a.png, sub/b c: It is uploaded.*"n",.*"v=w".*"e",.*"".*"f",.*"a.png".*"f",.*"b c".*)"), none, {"POST /form"}},
		{"-q link/../name.png $u/size", 0, none, none, {"PUT /size image/png 2"}},
		{"$u/form --field n=v", 0, HasSubstr("the form: It is uploaded"), none, {"POST /form"}},
		{"--json a.png $u/size", 0, MatchesRegex(R"(\{"Files":\["a.png"\],"Outcome":"Succeeded",.*"Answer":"6".*\}.)"), none,
			{"PUT /size image/png 6"}},
		{"a.png missing $u/none/", 1, none,
			MatchesRegex("corvane: a.png: Not uploaded: the server answered with status 404.\n(.*\n)?corvane: missing: .*missing cannot be "
						 "read.\n"),
			{"PUT /none/a.png image/png 6"}},
		{"a.png \"sub/b c\" $u/tus --tus --hash sha1", 0, HasSubstr("a.png: "), none,
			{"POST /tus", "PATCH /tus/1 application/offset+octet-stream 6", "POST /tus", "PATCH /tus/2 application/offset+octet-stream 2"}},
		{"a.png $u/tus --tus --form f", 2, none, HasSubstr("do not go with it"), {}},
		{"-X post a.png $u/busy", 1, none, HasSubstr("it is not sent again, since the server may have some of it.\nlater\n"),
			{"POST /busy image/png 6"}},
		{"-X post a.png $u/busy --may-repeat", 0, HasSubstr("It is uploaded"), none, {"POST /busy image/png 6", "POST /busy image/png 6"}},
		{"a.png -X delete $u/size", 1, none, HasSubstr("An upload is sent by PUT or POST"), {}},
		{"a.png a.png $u/size", 2, none, HasSubstr("end it with '/'"), {}},
		{"a.png sub/../a.png $u/size/", 2, none, HasSubstr("two files lead to the address"), {}},
		{"$u/size", 2, none, HasSubstr("there is no file to send"), {}},
		{"a.png b", 2, none, HasSubstr("'b' is no address"), {}},
		{"a.png $u/form --field n=v", 2, none, HasSubstr("--form NAME"), {}},
		{"$u/form --field nv", 2, none, HasSubstr("--field: 'nv' is no NAME=VALUE"), {}},
		{"", 2, none, HasSubstr("URL is required"), {}},
	};
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.words);
		Lab::Origin origin;
		origin.at("/size*", Lab::upload())
			.at("/form", Lab::form())
			.at("/tus*", Lab::tus())
			.at("/busy", Lab::inTurn({Lab::status({.code = 503, .retryAfter = "0", .text = "later"}), Lab::upload()}));
		const TempDir directory;
		directory.write("a.png", "abcdef");
		directory.write("sub/b c", "gh");
		directory.write("sub/deep/name.png", "another file");
		const ProcessRun run = runProcess({"/bin/sh", "-c",
			std::string("cd $0; ln -s sub/deep link; ln -s 'b c' sub/name.png; u=$2; export XDG_STATE_HOME=$0/state; exec $1 put ") +
				tested.words,
			directory.path(), CORVANE_PROGRAM, origin.url("")});
		EXPECT_EQ(run.status, tested.status);
		EXPECT_THAT(run.out, tested.out);
		EXPECT_THAT(run.err, tested.err);
		std::vector<std::string> requests;
		for (const Lab::Exchange& exchange : origin.log())
		{
			const Lab::Request& request = *exchange.request;
			const std::string type(request.header("Content-Type"));
			const bool isBare = request.bodyBytes > 0 && !type.starts_with("multipart/form-data; boundary=");
			requests.push_back(
				request.method + " " + request.target + (isBare ? " " + type + " " + std::to_string(request.bodyBytes) : ""));
		}
		EXPECT_EQ(requests, tested.requests);
	}
}

TEST(Put, ShowsOnATerminalHowFarItIs)
{
	Lab::Gate gate;
	Lab::Origin origin;
	origin.at("/size", Lab::upload(), Lab::hold(gate));
	const TempDir directory;
	directory.write("f", std::string(20 << 20, 'x'));
	RunningProcess process({"/bin/sh", "-c", "cd \"$0\" && exec script -qec \"$1 put f $2\" /dev/null", directory.path(), CORVANE_PROGRAM,
		origin.url("/size")});
	EXPECT_TRUE(waitFor([&] { return process.out().find(" sent of 20.0 MiB") != std::string::npos; })) << process.out();
	gate.open();
	const ProcessRun run = process.end(0);
	EXPECT_EQ(run.status, 0);
	EXPECT_THAT(run.out, MatchesRegex(".* sent of 20.0 MiB\x1b\\[K\r\x1b\\[Kf: It is uploaded[^\n]*\n20971520\r\n(\r\x1b\\[K)?"));
}

TEST(Put, GoesOnAfterItWasEnded)
{
	const Lab::Behaviour server = Lab::tus();
	Lab::Gate gate;
	Lab::Origin origin;
	origin.at("/tus*", server).at("PATCH /tus*", server, Lab::hold(gate));
	const TempDir directory;
	const std::filesystem::path notes = directory.path("state/corvane/uploads");
	const std::vector<std::string> words = {"/usr/bin/env", "XDG_STATE_HOME=" + directory.path("state"), CORVANE_PROGRAM, "put",
		directory.write("level.pak", "content"), origin.url("/tus"), "--tus"};
	RunningProcess process(words);
	ASSERT_TRUE(waitFor([&] { return origin.running() == 1; }));
	EXPECT_FALSE(std::filesystem::is_empty(notes));
	const ProcessRun ended = process.end(SIGINT);
	EXPECT_EQ(ended.status, 128 + SIGINT);
	EXPECT_THAT(ended.err, HasSubstr("corvane: interrupted\ncorvane: the same 'corvane put' goes on\n"));
	gate.open();
	const ProcessRun again = runProcess(words);
	EXPECT_EQ(again.status, 0) << again.err;
	EXPECT_TRUE(std::filesystem::is_empty(notes));
	const std::vector<Lab::Exchange> log = origin.log();
	EXPECT_EQ(std::count_if(log.begin(), log.end(), [](const Lab::Exchange& each) { return each.request->method == "POST"; }), 1);
}
