#include "ScriptFixture.h"

namespace
{
	const char* const cases[] = {
		R"lua( -- wait and tick let tasks run
			local calls = 0
			event:Add(function() calls = calls + 1 end)
			SampleLibrary.raise{ later = true }
			assert(calls == 0)
			tick()
			assert(calls == 1)
			SampleLibrary.raise{ later = true }
			assert(wait(function() return calls == 2 end, 10) == true)
			assert(wait(function() return false end, 0.001) == false)
			assert(wait(function() return false end, 0/0) == false)
		)lua",
		R"lua( -- but not inside handlers
			local errors = ""
			event:Add(function()
				for _, call in ipairs{ tick, wait } do
					errors = errors .. select(2, pcall(call, function() return true end, 1))
				end
			end)
			SampleLibrary.raise()
			assert(errors:find("tick may not be called inside an event handler.*wait may not be called inside an event handler"), errors)
			tick()
		)lua",
		R"lua( -- an error in the condition passes through the loop, which still works
			local ok, message = pcall(wait, function() error("broken condition") end, 60)
			assert(not ok and message:find("broken condition"), message)
			assert(wait(function() return true end, 60))
		)lua",
	};

	using State = ScriptFixture;
} // namespace

TEST_F(State, ScriptsWaitForTasks)
{
	runEach(cases);
}
