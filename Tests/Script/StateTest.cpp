#include "ScriptFixture.h"

namespace
{
	const char* const stateCases[] = {
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
			SampleLibrary.raise{ later = true }
			sleep(0.001)
			assert(calls == 3)
		)lua",
		R"lua( -- but not inside handlers
			local errors = ""
			event:Add(function()
				for call, argument in pairs{ [tick] = 0, [wait] = function() return true end, [sleep] = 1 } do
					errors = errors .. select(2, pcall(call, argument, 1))
				end
			end)
			SampleLibrary.raise()
			for _, name in ipairs{ "tick", "wait", "sleep" } do
				assert(errors:find(name .. " may not be called inside an event handler"), errors)
			end
			tick()
		)lua",
		R"lua( -- an error in the condition passes through the loop, which still works
			local ok, message = pcall(wait, function() error("broken condition") end, 60)
			assert(not ok and message:find("broken condition"), message)
			assert(wait(function() return true end, 60))
		)lua",
	};

	const struct
	{
		const char* script;
		std::vector<std::string> warnings;
	} omissions[] = {
		{"local one = SampleLibrary.addRecord{ text = 'a' }.records\n"
		 "local two = SampleLibrary.addRecord{ text = 'b', others = one }.records\n"
		 "SampleLibrary.addRecord{ text = 'c', others = two }\n"
		 "SampleLibrary.textsOf{ records = { one[1] } }",
			{"requests that were built and never executed: 2, the first by SampleLibrary.addRecord at script:2"}},
		{"local one = SampleLibrary.addRecord{ text = 'a' }.records\n"
		 "SampleLibrary.textsOf{ records = SampleLibrary.addRecord{ text = 'b', others = one }.records }",
			{}},
		{"SampleNode.startNode{ statusCode = 200 } SampleNode.startNode{ statusCode = 404, OnSuccess = print }\n"
		 "SampleNode.startNode{ statusCode = 404, OnFail = print } SampleNode.startNode{ statusCode = 404 }.OnFail:Add(print)\n"
		 "SampleNode.startNode{ statusCode = 500 } tick()",
			{"nodes that failed without a handler for OnFail: 2, the first is SampleNode.startNode at script:1"}},
		{"SampleLibrary.addRecord{ text = 'a' } os.exit(0)", {}},
	};

	using State = ScriptFixture;
} // namespace

TEST_F(State, ScriptsWaitForTasks)
{
	runEach(stateCases);
}

TEST_F(State, WarnsOfWhatTheScriptHasForgotten)
{
	for (const auto& [text, warnings] : omissions)
	{
		renew();
		script->runText(text);
		EXPECT_EQ(script->warnings(), warnings) << text;
	}
}
