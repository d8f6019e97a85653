#include "DemoOrigin.h"
#include "ProcessRun.h"
#include "TempDir.h"

#include <gmock/gmock.h>

using ::testing::HasSubstr;

namespace
{
	class ScriptRun : public ::testing::Test
	{
	protected:
		/** Runs a script with the server's address as its first argument. */
		ProcessRun run(const std::string& text) { return runProgram({"run", directory.write("script.lua", text), origin.url()}); }

		const TempDir directory;
		const Program::DemoOrigin origin;
	};

	const std::string startOneRequest = R"lua(
		local call = CorvaneBPLibrary.CreateHttpRequestGET{ url = arg[1] .. "/wait/50" }
		local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
	)lua";
} // namespace

TEST_F(ScriptRun, GoesOnUntilNothingIsPending)
{
	const ProcessRun result = run(startOneRequest + R"lua(
		target.onhttpRequestCompleteDelegate:Add(function(e) print(e.statusCode, e.dataString) end)
		print("last line")
	)lua");
	EXPECT_EQ(result.status, 0) << result.err;
	EXPECT_EQ(result.out, "last line\n200\twaited 50 ms\n");
}

TEST_F(ScriptRun, ErrorsEndItWithStatusOneAndATraceback)
{
	const struct
	{
		std::string script;
		const char* message;
	} cases[] = {
		{"error('at the top')", "script.lua:1: at the top\nstack traceback:"},
		{"local x =", "script.lua:1: unexpected symbol near <eof>"},
		{startOneRequest + "target.onhttpRequestCompleteDelegate:Add(function() error('in a handler') end)",
			"script.lua:4: in a handler\nstack traceback:"},
		{startOneRequest + "error('while a transfer runs')", "script.lua:4: while a transfer runs"},
	};
	for (const auto& tested : cases)
	{
		const ProcessRun result = run(tested.script);
		EXPECT_EQ(result.status, 1) << tested.script;
		EXPECT_THAT(result.err, HasSubstr(tested.message));
		EXPECT_THAT(result.err, ::testing::StartsWith("corvane: "));
	}
}

TEST_F(ScriptRun, ExitGivesTheStatusEvenWhileATransferRuns)
{
	const ProcessRun result = run(startOneRequest + "os.exit(7)");
	EXPECT_EQ(result.status, 7);
	EXPECT_EQ(result.err, "");
}

TEST_F(ScriptRun, EverythingBehindTheScriptBelongsToIt)
{
	const std::string script =
		directory.write("script.lua", "print(#arg, ...) print((FileFunctionsCorv.getCleanDirectory{ filePath = '/x' }).ReturnValue)");
	const ProcessRun result = runProgram({"run", "--project", "/usr", script, "--project", "-x", "", "a=b"});
	EXPECT_EQ(result.status, 0) << result.err;
	EXPECT_EQ(result.out, "4\t--project\t-x\t\ta=b\n/usr/x\n");
}

TEST_F(ScriptRun, WrongUsageHasStatusTwo)
{
	const std::vector<std::string> commandLines[] = {
		{"run"}, {"run", "--nope", "script.lua"}, {"run", directory.path("missing.lua")}, {"run", directory.path("")}};
	for (const std::vector<std::string>& commandLine : commandLines)
	{
		EXPECT_EQ(runProgram(commandLine).status, 2) << ::testing::PrintToString(commandLine);
	}
}
