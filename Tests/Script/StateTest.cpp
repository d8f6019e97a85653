#include "ScriptFixture.h"
#include "TempDir.h"

using State = ScriptFixture;

TEST_F(State, WaitAndTickLetTasksRun)
{
	runGood(R"lua(
		local calls = 0
		SampleLibrary.getTarget().ReturnValue.onSample:Add(function() calls = calls + 1 end)
		SampleLibrary.raise{ later = true }
		assert(calls == 0)
		tick()
		assert(calls == 1)
		SampleLibrary.raise{ later = true }
		assert(wait(function() return calls == 2 end, 10) == true)
		assert(wait(function() return false end, 0.001) == false)
		assert(wait(function() return false end, 0/0) == false)
		assert(wait(function() return calls == 2 end, math.huge))
	)lua");
}

TEST_F(State, WaitAndTickAreErrorsInsideHandlers)
{
	runGood(R"lua(
		local errors = ""
		SampleLibrary.getTarget().ReturnValue.onSample:Add(function()
			for _, call in ipairs{ tick, wait } do
				errors = errors .. select(2, pcall(call, function() return true end, 1))
			end
		end)
		SampleLibrary.raise()
		assert(errors:find("tick may not be called inside an event handler.*wait may not be called inside an event handler"), errors)
		tick()
	)lua");
}

TEST_F(State, ErrorInTheConditionPassesThroughTheLoop)
{
	runGood(R"lua(
		local ok, message = pcall(wait, function() error("broken condition") end, 60)
		assert(not ok and message:find("broken condition"), message)
		assert(wait(function() return true end, 60), "the loop still works")
	)lua");
}

TEST_F(State, ErrorsCarryPlaceAndTraceback)
{
	EXPECT_EQ(runBad("local function inner() error('oops') end\ninner()"), "script:1: oops");
	EXPECT_THAT(script->error(), ::testing::HasSubstr("script:2: in main chunk"));
}

TEST_F(State, SyntaxErrorsAndBytecodeAreErrors)
{
	EXPECT_THAT(runBad("local = 5"), ::testing::StartsWith("script:1: "));
	EXPECT_THAT(runBad("\x1bLua"), ::testing::HasSubstr("attempt to load a binary chunk"));
}

TEST_F(State, ExitEndsTheScriptWithItsStatus)
{
	EXPECT_EQ(runBad("os.exit(3) error('must not be reached')"), "");
	EXPECT_TRUE(script->hasEnded());
	EXPECT_EQ(script->exitStatus(), 3);
}

TEST_F(State, ArgumentsReachTheScript)
{
	const TempDir directory;
	const std::string path = directory.write("arguments.lua", R"lua(
		assert(arg[1] == 'one' and arg[2] == '' and #arg == 2 and arg[0]:match('%.lua$'))
		assert(select('#', ...) == 2 and ... == 'one')
	)lua");
	EXPECT_TRUE(script->runFile(path, {"one", ""})) << script->error();
	EXPECT_FALSE(script->runFile(directory.path("missing.lua")));
	EXPECT_THAT(script->error(), ::testing::HasSubstr("cannot open"));
}
