#include "ProcessRun.h"
#include "SharedFiles.h"

#include <gmock/gmock.h>

using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace
{
	const std::string getGreeting = R"lua(
		local call = CorvaneBPLibrary.CreateHttpRequestGET{ url = arg[1] .. "/greeting", header = { Authorization = "5ecret" } }
		local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
		target.onhttpRequestCompleteDelegate:Add(function(e) print(e.statusCode, e.dataString) end)
	)lua";
} // namespace

TEST(LabCommand, RunsAGameAgainstEachNetwork)
{
	const std::string examples = (Program::sharedFolder("examples") / "lab").string();
	for (const std::string name : {"lossy-train", "captive-portal", "dies-at-90-percent"})
	{
		const ProcessRun run = runProgram({"lab", examples + '/' + name + ".lua", "--run", examples + "/download-level.lua"});
		EXPECT_EQ(run.status, 0) << name << run.err;
		EXPECT_THAT(run.out, EndsWith("the level is complete\n")) << name;
		EXPECT_THAT(run.out, ::testing::StartsWith("1\t")) << name;
		EXPECT_THAT(run.out, HasSubstr("\n2\t")) << name << ": nothing went wrong";
	}
}

TEST(LabCommand, HasItsGameTrustItsCertificate)
{
	const TempDir directory;
	const std::string game = directory.write("game.lua", "assert(arg[1]:find('^https://'))" + getGreeting);
	const std::string origin = directory.write("origin.lua", "lab.at('/greeting', 'Hello!')");
	const ProcessRun run = runProgram({"lab", origin, "--tls", directory.path("certificate"), "--run", game});
	EXPECT_EQ(run.out, "200\tHello!\n") << run.err;
	EXPECT_THAT(directory.read("certificate"), ::testing::StartsWith("-----BEGIN CERTIFICATE-----\n"));
}

TEST(LabCommand, ReplaysWhatItRecords)
{
	const TempDir directory;
	const std::string cassette = directory.path("cassette");
	const std::string origin = directory.write("origin.lua", "lab.at('/greeting', 'Hello!')");
	const std::string game = directory.write("game.lua", getGreeting);
	const std::string outer = directory.write("outer.sh", R"sh(
		"$1" lab "$2" --port 0 > "$5" & lab=$!
		trap 'kill $lab' EXIT
		until [ -s "$5" ]; do sleep 0.01; done
		"$1" lab --record "$3" --to "$(cat "$5")" --run "$4"
		"$1" lab --replay "$3" --run "$4"
	)sh");
	const ProcessRun run = runProcess({"/bin/sh", outer, CORVANE_PROGRAM, origin, cassette, game, directory.path("url")});
	EXPECT_EQ(run.out, "200\tHello!\n200\tHello!\n") << run.err;
	EXPECT_THAT(directory.read("cassette"), HasSubstr("> Authorization: (removed)\\r\\n\n"));
}

TEST(LabCommand, SaysWhatItCannotDo)
{
	const struct
	{
		std::vector<std::string> arguments;
		int status;
		const char* err;
	} cases[] = {
		{{"lab", "--record", "x"}, 2, "corvane: --record FILE and --to URL belong together\n"},
		{{"lab", "a.lua", "--replay", "/dev/null"}, 2, "corvane: a lab runs a script, or records, or replays\n"},
		{{"lab", "--record", "x", "--to", "http://127.0.0.1:1", "--tls", "y"}, 2,
			"corvane: --tls does not go with --record: clients speak plain HTTP to a recorder\n"},
		{{"lab", "/none.lua"}, 1, "corvane: cannot open /none.lua: No such file or directory\n"},
		{{"lab", "--replay", "/dev/null"}, 1, "corvane: /dev/null: this is no cassette: its first line has to be 'corvane cassette 1'\n"},
		{{"lab", "--record", "/none/x", "--to", "http://127.0.0.1:1"}, 1, "corvane: /none/x: No such file or directory\n"},
	};
	for (const auto& tested : cases)
	{
		const ProcessRun run = runProgram(tested.arguments);
		EXPECT_EQ(run.status, tested.status) << run.out;
		EXPECT_EQ(run.err, tested.err);
	}
}
