#include "ScriptFixture.h"

using ::testing::HasSubstr;

namespace
{
	const char* const eventCases[] = {
		R"lua( -- handlers receive parameters by name
			local got
			SampleLibrary.getTarget().ReturnValue.ONSAMPLE:Add(function(e) got = e end)
			SampleLibrary.raise{ text = "h\u{e9}" }
			assert(got.text == "h\u{e9}" and got.list[2] == "b" and got.bytes == "\0\xFF" and got.big == 1 << 40)
			assert(got.TEXT == got.text and pairs(got) == next)
		)lua",
		R"lua( -- they may bind and unbind during the broadcast
			local calls, own = ""
			own = event:Add(function()
				event:Remove(own)
				calls = calls .. "once "
				event:Add(function() calls = calls .. "later" end)
			end)
			SampleLibrary.raise()
			collectgarbage()
			SampleLibrary.raise()
			assert(calls == "once later")
		)lua",
		R"lua( -- they run on the coroutine that raised the event
			local seen
			event:Add(function() seen = coroutine.running() end)
			local thread = coroutine.create(function() SampleLibrary.raise() coroutine.yield() SampleLibrary.raise() end)
			for round = 1, 2 do
				seen = nil
				assert(coroutine.resume(thread))
				assert(seen == thread)
			end
		)lua",
	};

	using Event = ScriptFixture;
} // namespace

TEST_F(Event, RunsHandlers)
{
	runEach(eventCases);
}

TEST_F(Event, RemoveAndClearLeaveOtherHandlers)
{
	GetMutableDefault<USampleLibrary>()->onSample.AddUniqueDynamic(GetMutableDefault<USampleLibrary>(), &USampleLibrary::countCall);
	runGood(R"lua(
		local calls = ""
		local first = event:Add(function() calls = calls .. 1 end)
		local second = event:Add(function() calls = calls .. 2 end)
		local other = SampleLibrary.makeObject().ReturnValue.onSample
		assert(not other:Remove(first), "a handle of another event")
		SampleLibrary.raise()
		assert(event:Remove(first) and not event:Remove(first))
		other:Clear()
		SampleLibrary.raise()
		assert(calls == "122")
		event:Clear()
		SampleLibrary.raise()
		assert(calls == "122" and not event:Remove(second))
	)lua");
	EXPECT_EQ(USampleLibrary::handlerCalls, 3);
}

TEST_F(Event, ErrorInAHandlerEndsTheScriptAfterTheTask)
{
	EXPECT_EQ(runBad(R"lua(
		event:Add(function() error("first") end)
		event:Add(function() ranAfterwards = true error("second") end)
		SampleLibrary.raise()
		assert(ranAfterwards)
		wait(function() return false end, 60)
	)lua"),
		"script:2: first");
	EXPECT_THAT(runBad("event:Add(function() SampleLibrary.raise() end) SampleLibrary.raise()"), HasSubstr("stack overflow"));

	renew();
	runGood("event:Add(function() error({}) end) SampleLibrary.raise{ later = true }");
	EXPECT_FALSE(script->hasEnded());
	tick();
	EXPECT_TRUE(script->hasEnded());
	EXPECT_THAT(script->error(), ::testing::StartsWith("table: "));
}
