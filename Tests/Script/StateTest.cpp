#include "ScriptFixture.h"

#include <cstdio>
#include <fstream>

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
		assert(wait(function() return false end, -1) == false and wait(function() return false end, 0/0) == false)
		assert(wait(function() return calls == 2 end, math.huge))
	)lua");
}

TEST_F(State, WaitAndTickAreErrorsInsideHandlers)
{
	runGood(R"lua(
		local errors = {}
		SampleLibrary.getTarget().ReturnValue.onSample:Add(function()
			for _, call in ipairs{ tick, function() wait(function() return true end, 1) end } do
				table.insert(errors, (select(2, pcall(call))))
			end
		end)
		SampleLibrary.raise()
		assert(errors[1]:find("tick may not be called inside an event handler", 1, true), errors[1])
		assert(errors[2]:find("wait may not be called inside an event handler", 1, true), errors[2])
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
	renew();
	EXPECT_THAT(runBad("\x1bLua"), ::testing::HasSubstr("attempt to load a binary chunk"));
}

TEST_F(State, ExitEndsTheScriptWithItsStatus)
{
	EXPECT_FALSE(script->runText("os.exit(3) print('must not be reached')"));
	EXPECT_TRUE(script->hasEnded());
	EXPECT_EQ(script->exitStatus(), 3);
	EXPECT_EQ(script->error(), "");
}

TEST_F(State, ArgumentsReachTheScript)
{
	const std::string path = ::testing::TempDir() + "ArgumentsReachTheScript.lua";
	std::ofstream(path) << "assert(arg[1] == 'one' and arg[2] == '' and #arg == 2 and arg[0]:match('%.lua$'))\n"
						   "assert(select('#', ...) == 2 and ... == 'one')\n";
	EXPECT_TRUE(script->runFile(path, {"one", ""})) << script->error();
	std::remove(path.c_str());
	EXPECT_FALSE(script->runFile(path));
	EXPECT_THAT(script->error(), ::testing::HasSubstr("cannot open"));
}
