#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Origin.h"
#include "ProcessRun.h"
#include "RandomBytes.h"
#include "TargetNames.h"
#include "TempDir.h"
#include "Waiting.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sstream>

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Matcher;
using ::testing::MatchesRegex;

namespace
{
	const std::string content = randomBytes(3'000'000);
} // namespace

TEST(Get, NamesFilesByTheirAddress)
{
	const std::pair<const char*, const char*> cases[] = {{"http://h/a.bin", "a.bin"}, {"http://h/x/b%20c.bin?v=1#d", "b c.bin"},
		{"http://h", "index.html"}, {"http://h/", "index.html"}, {"http://h/x/", "index.html"}, {"http://h?a=/b", "index.html"},
		{"http://h/%2e%2E", "index.html"}, {"http://h/..%2Fetc%2fpasswd", ".._etc_passwd"}, {"http://h/a%5cb%00%zz%4", "a_b_%zz%4"}};
	for (const auto& [address, name] : cases)
	{
		EXPECT_EQ(Program::fileNameOf(address), name) << address;
	}
}

TEST(Get, PutsFilesWhereTheyBelongAndTellsTheirEnd)
{
	struct Case
	{
		const char* words; // $u is the address of a server
		int status;
		Matcher<const std::string&> out;
		Matcher<const std::string&> err;
		std::vector<std::pair<std::string, std::string>> files;
		std::vector<std::string> missing = {};
	};
	const std::string none;
	const Case cases[] = {
		{"$u/a.bin $u/x/b.bin $u/c.bin -j 2 -d new/sub", 0, HasSubstr("new/sub/a.bin: The file is there: 6 bytes.\n"), none,
			{{"new/sub/a.bin", "/a.bin"}, {"new/sub/b.bin", "/x/b.bin"}, {"new/sub/c.bin", "/c.bin"}}},
		{"-q $u/a.bin -o b.bin --hash sha256", 0, none, none, {{"b.bin", "/a.bin"}}},
		{"$u/a.bin --hash md5", 0, "a.bin: The file is there: 6 bytes. 9f4779adcaf7e3295ce154ac9068add3\n", none, {}},
		{"$u/old --hash md5:00112233445566778899aabbccddeeff", 1, none, MatchesRegex("corvane: old: .*hash.*\n"), {{"old", "old"}}},
		{"--hash $u/a.bin sha256", 2, none, HasSubstr("'sha256' is no address: the scheme is missing"), {}},
		{"$u/missing $u/a.bin", 1, HasSubstr("a.bin: "), MatchesRegex("corvane: missing: Not downloaded: the server answered 404.\n"),
			{{"a.bin", "/a.bin"}}, {"missing"}},
		{"--json $u/locked -H 'X-Key: k'", 0, MatchesRegex(R"(\{"FilePath":"locked","Outcome":"Succeeded",.*"TransferredBytes":7,.*\}.)"),
			none, {{"locked", "/locked"}}},
		{"$u/old --if-exists keep", 0, HasSubstr("old: "), none, {{"old", "old"}}},
		{"$u/old --if-exists newest", 2, none,
			HasSubstr("--if-exists: expected ECorvaneIfTargetExists (Replace, Keep, Fail, OnlyIfNewer), got \"newest\""), {}},
		{"$u/a.bin $u/b.bin -o x", 2, none, HasSubstr("-o names one file"), {}, {"x"}},
		{"$u/a.bin $u/x/a.bin", 2, none, "corvane: two addresses lead to the file 'a.bin'\n", {}, {"a.bin"}},
		{"$u/a.bin --limit-rate 2X", 2, none, HasSubstr("--limit-rate"), {}, {"a.bin"}},
		{"$u/a.bin --limit-rate -1", 2, none, HasSubstr("--limit-rate"), {}, {"a.bin"}},
		{"", 2, none, HasSubstr("URL is required"), {}},
		{"-i list -d new", 0, HasSubstr("new/b c.bin: The file is there: 6 bytes.\n"), none,
			{{"new/a.bin", "/a.bin"}, {"new/b c.bin", "/b.bin"}, {"new/sub/d", "/d.bin"}}},
		{"-q -i - $u/e.bin < list", 0, none, none, {{"e.bin", "/e.bin"}, {"b c.bin", "/b.bin"}}},
		{"-i bad", 2, none, "corvane: bad:3: '../up' is no file below the folder\n", {}, {"one"}},
		{"-i back", 2, none, "corvane: back:1: '..\\up' is no file below the folder\n", {}},
		{"-i twice", 2, none, "corvane: two addresses lead to the file 'here/one'\n", {}, {"one"}},
		{"-d 'a\\b' $u/a.bin", 2, none, HasSubstr("'a\\b/a.bin' lies at '/"), {}, {"a"}},
		{"-o pipe $u/a.bin", 2, none, "corvane: 'pipe' is there, and no file: it is not replaced by one\n", {}},
		{"-o lost $u/a.bin", 2, none, HasSubstr("'lost' is there, and no file"), {}},
		{"-q -o link $u/a.bin", 0, none, none, {{"old", "/a.bin"}}},
		{"-i list -o x", 2, none, HasSubstr("-o names one file"), {}},
		{"-i none", 2, none, HasSubstr("cannot read 'none'"), {}},
	};
	const Lab::Behaviour missing = Lab::status({.code = 404, .text = "no"});
	Lab::Origin server;
	server.at("*", [](const Lab::Request& request) { return request.target; }).at("/missing", missing);
	server.at(
		"/locked", [&](const Lab::Request& request) { return request.header("X-Key") == "k" ? Lab::Behaviour(request.target) : missing; });
	for (const Case& tested : cases)
	{
		SCOPED_TRACE(tested.words);
		const TempDir directory;
		directory.write("old", "old");
		directory.write("list", "# some files\n\n$u/a.bin\r\n  $u/b.bin\tb c.bin \n$u/d.bin sub/d");
		directory.write("bad", "$u/a.bin one\n\n$u/b.bin ../up\n");
		directory.write("back", "$u/a.bin ..\\up\n");
		directory.write("twice", "\xef\xbb\xbf$u/a.bin one\n$u/b.bin here/one\n");
		const ProcessRun run = runProcess({"/bin/sh", "-c",
			std::string("cd $0; mkfifo pipe; ln -s . here; ln -s old link; ln -s none lost; u=$2; "
						"sed -i \"s|\\$u|$u|\" list bad back twice; exec $1 get ") +
				tested.words,
			directory.path(), CORVANE_PROGRAM, "http://" + server.authority()});
		EXPECT_EQ(run.status, tested.status);
		EXPECT_THAT(run.out, tested.out);
		EXPECT_THAT(run.err, tested.err);
		for (const auto& [name, bytes] : tested.files)
		{
			EXPECT_EQ(directory.read(name), bytes);
		}
		for (const std::string& name : tested.missing)
		{
			EXPECT_FALSE(directory.exists(name));
		}
	}
}

TEST(Get, GoesOnAfterItWasEnded)
{
	for (const int signal : {SIGINT, SIGKILL})
	{
		Lab::Origin server;
		server.at("/level.pak", Lab::file(content), Lab::onlyFirst(1, Lab::stall({.at = {.share = 0.5}})));
		const TempDir directory;
		const std::vector<std::string> words = {CORVANE_PROGRAM, "get", server.url("/level.pak"), "-d", directory.path(), "--json"};
		RunningProcess process(words);
		const auto size = [&]
		{
			std::error_code missing;
			const auto bytes = std::filesystem::file_size(directory.path("level.pak.corvpart"), missing);
			return missing ? 0 : bytes;
		};
		ASSERT_TRUE(waitFor([&] { return size() > 1'000'000; }));
		const ProcessRun ended = process.end(signal);
		EXPECT_EQ(ended.status, 128 + signal);
		EXPECT_FALSE(directory.exists("level.pak"));
		if (signal == SIGINT)
		{
			EXPECT_THAT(ended.out, HasSubstr(R"("Outcome":"Ended")"));
			EXPECT_THAT(ended.err, ContainsRegex("level.pak: .* 1[0-9]* bytes are kept .*\ncorvane: interrupted\n"
												 "corvane: the same 'corvane get' goes on\n"));
		}
		const ProcessRun again = runProcess(words);
		EXPECT_EQ(again.status, 0) << again.err;
		EXPECT_TRUE(directory.read("level.pak") == content);
		EXPECT_FALSE(directory.exists("level.pak.corvpart") || directory.exists("level.pak.corvjournal"));
		const bool hasTakenOver = again.out.find(R"("TakenOverBytes":0,)") == std::string::npos;
		EXPECT_TRUE(hasTakenOver || signal == SIGKILL) << again.out; // what a kill leaves may not be vouched for yet
	}
}

/** With a terminal of its own; what it draws is taken apart into screens, which begin where the cursor goes up. */
TEST(Get, TellsOfSeveralFilesOnATerminal)
{
	Lab::Gate drawn;
	Lab::Origin server;
	server.at("/*", Lab::file(content), Lab::hold(drawn, {.byte = content.size() / 2}));
	const TempDir directory;
	RunningProcess process({"/usr/bin/script", "-qec",
		"stty cols 60 rows 5; cd " + directory.path() + "; " CORVANE_PROGRAM " get " +
			server.url("/one-file-of-a-long-name-that-is-cut.bin ") + server.url("/two ") + server.url("/three ") + server.url("/four"),
		"/dev/null"});
	const auto isDrawn = [&](const char* text) { return process.out().find(text) != std::string::npos; };
	EXPECT_TRUE(waitFor([&] { return isDrawn(" 0 of 4 files: 5.7 MiB of 11.4 MiB") && isDrawn(": 1.4 MiB of 2.9 MiB"); })) << process.out();
	drawn.open();
	EXPECT_TRUE(waitFor([&] { return process.hasEnded(); }));
	const ProcessRun run = process.end(0);
	EXPECT_EQ(run.status, 0);
	EXPECT_THAT(run.out, ContainsRegex(" 50 % (two|three|four): 1\\.4 MiB of 2\\.9 MiB"));
	EXPECT_THAT(run.out, HasSubstr("four: The file is there: 3000000 bytes."));
	size_t lines = 0; // of files
	std::string line;
	for (std::istringstream text(run.out); std::getline(text, line);)
	{
		const size_t newScreen = line.rfind('\x1b');
		lines = newScreen == std::string::npos ? lines : 0;
		line = newScreen == std::string::npos ? line : line.substr(newScreen + 3); // behind what takes the old one away
		EXPECT_TRUE(line.size() < 61 || line.find(": The file is there") != std::string::npos) << line;
		lines += line.find("MiB") != std::string::npos && line.find(" of 4 files") == std::string::npos;
		EXPECT_LE(lines, 3u) << run.out; // of five, one is for all and one for the shell
	}
}
