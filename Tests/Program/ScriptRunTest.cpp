#include "DemoOrigin.h"
#include "ProcessRun.h"
#include "TempDir.h"

#include <gmock/gmock.h>

namespace
{
	const std::string startOneRequest = R"lua(
		local call = CorvaneBPLibrary.CreateHttpRequestGET{ url = arg[1] .. "/wait/50" }
		local target = CorvaneBPLibrary.executeHttpRequests{ httpRequests = call.httpRequests }.CorvaneTarget
	)lua";

	const struct
	{
		std::string script;
		int status;
		const char* out;
		const char* err; // how it begins
	} scriptCases[] = {
		{"print(arg[0], #arg, select(2, ...)) print((FileFunctionsCorv.getCleanDirectory{ filePath = '/x' }).ReturnValue)", 0,
			"script.lua\t5\t--project\t-x\t\ta=b\n/usr/x\n", ""},
		{"CorvaneBPLibrary.CreateHttpRequestGET{ url = arg[1] }", 0, "",
			"corvane: warning: requests that were built and never executed: 1, the first by CorvaneBPLibrary.CreateHttpRequestGET at "
			"script.lua:1\n"},
		{"error('at the top')", 1, "", "corvane: script.lua:1: at the top\nstack traceback:"},
		{"local x =", 1, "", "corvane: script.lua:1: unexpected symbol near <eof>"},
		{startOneRequest + "target.onhttpRequestCompleteDelegate:Add(function(e) error(e.dataString) end) print('last line')", 1,
			"last line\n", "corvane: script.lua:4: waited 50 ms\nstack traceback:"},
		{startOneRequest + "error('while a transfer runs')", 1, "", "corvane: script.lua:4: while a transfer runs"},
		{startOneRequest + "os.exit(7)", 7, "", ""},
		{R"lua( -- nodes end with the program at the latest
			local ended = 0
			local pins = { url = arg[1] .. "/wait/30", optionalRequestID = "same" }
			pins.OnSuccess = function(e)
				ended = ended + 1
				print(ended, e.requestID, e.dataString)
				if ended < 3 then AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST(pins) end
			end
			AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST(pins)
			collectgarbage()
			assert(wait(function() return ended == 2 end, 10))
			print("last line") -- the third one is under way
		)lua",
			0, "1\tsame\twaited 30 ms\n2\tsame\twaited 30 ms\nlast line\n3\tsame\twaited 30 ms\n", ""},
		{R"lua( -- an early end leaves nodes under way
			local outcomes = 0
			local function count() outcomes = outcomes + 1 end
			for _, path in ipairs{ "/hello", "/wait/300", "/hello", "/wait/300" } do
				AsyncNodeHttpRequest.AsyncExecuteHTTP_GET_REQUEST{ url = arg[1] .. path, OnSuccess = count }
			end
			assert(wait(function() return outcomes >= 2 end, 10))
			os.exit(5)
		)lua",
			5, "", ""},
	};
} // namespace

TEST(ScriptRun, EndsWithStatusOutputAndError)
{
	const TempDir directory;
	const Program::DemoOrigin origin;
	for (const auto& tested : scriptCases)
	{
		directory.write("script.lua", tested.script);
		const char* const command = R"(cd "$0" && exec "$1" run --project /usr script.lua "$2" --project -x "" a=b)";
		const ProcessRun run = runProcess({"/bin/sh", "-c", command, directory.path(), CORVANE_PROGRAM, origin.url()});
		EXPECT_EQ(run.status, tested.status) << tested.script;
		EXPECT_EQ(run.out, tested.out) << tested.script;
		EXPECT_THAT(run.err, ::testing::StartsWith(tested.err));
		EXPECT_TRUE(*tested.err || run.err.empty()) << run.err;
	}
}
