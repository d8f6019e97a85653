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
		EXPECT_THAT(result.err, ::testing::ContainsRegex(std::string("^corvane: .*") + tested.message));
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

TEST_F(ScriptRun, NodesEndWithTheProgramAtTheLatest)
{
	const ProcessRun result = run(R"lua(
		local ended = 0
		local pins = { url = arg[1] .. "/wait/30", optionalRequestID = "same" }
		pins.OnSuccess = function(e)
			ended = ended + 1
			print(ended, e.requestID, e.dataString)
			if ended < 3 then AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST(pins) end
		end
		pins.OnFail = function(e) error("failed with " .. e.statusCode) end
		AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST(pins)
		collectgarbage()
		assert(wait(function() return ended == 2 end, 10))
		print("last line") -- the third one is under way
	)lua");
	EXPECT_EQ(result.status, 0) << result.err;
	EXPECT_EQ(result.out, "1\tsame\twaited 30 ms\n2\tsame\twaited 30 ms\nlast line\n3\tsame\twaited 30 ms\n");
	EXPECT_EQ(result.err, "");
}

TEST_F(ScriptRun, AnEarlyEndLeavesNodesUnderWay)
{
	const ProcessRun result = run(R"lua(
		local outcomes = 0
		for number = 1, 6 do -- the origin has few threads
			AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST{
				url = arg[1] .. (number > 4 and "/wait/300" or "/hello"),
				OnSuccess = function() outcomes = outcomes + 1 end,
				OnFail = function(e) error("failed with " .. e.statusCode) end,
			}
		end
		assert(wait(function() return outcomes >= 4 end, 10))
		os.exit(5)
	)lua");
	EXPECT_EQ(result.status, 5) << result.err;
	EXPECT_EQ(result.err, "");
}
