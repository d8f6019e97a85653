#include "ScriptFixture.h"

using Event = ScriptFixture;

TEST_F(Event, HandlerReceivesParametersByName)
{
	runGood(R"lua(
		local got
		SampleLibrary.getTarget().ReturnValue.ONSAMPLE:Add(function(e) got = e end)
		SampleLibrary.raise{ text = "h\u{e9}" }
		assert(got.text == "h\u{e9}" and got.list[2] == "b" and got.bytes == "\0\xFF" and got.big == 1 << 40)
	)lua");
}

TEST_F(Event, RemoveAndClearLeaveOtherHandlers)
{
	GetMutableDefault<USampleLibrary>()->onSample.AddUniqueDynamic(GetMutableDefault<USampleLibrary>(), &USampleLibrary::countCall);
	runGood(R"lua(
		local event, calls = SampleLibrary.getTarget().ReturnValue.onSample, {}
		local first = event:Add(function() table.insert(calls, 1) end)
		local second = event:Add(function() table.insert(calls, 2) end)
		local other = SampleLibrary.makeObject().ReturnValue.onSample
		assert(not other:Remove(first), "a handle of another event")
		SampleLibrary.raise()
		assert(event:Remove(first) and not event:Remove(first))
		SampleLibrary.raise()
		assert(table.concat(calls) == "122")
		other:Clear()
		SampleLibrary.raise()
		SampleLibrary.getTarget().ReturnValue.onSample:Clear()
		SampleLibrary.raise()
		assert(table.concat(calls) == "1222" and not event:Remove(second))
	)lua");
	EXPECT_EQ(USampleLibrary::handlerCalls, 4);
}

TEST_F(Event, HandlersMayBindAndUnbindDuringTheBroadcast)
{
	runGood(R"lua(
		local event, calls, own = SampleLibrary.getTarget().ReturnValue.onSample, {}
		own = event:Add(function()
			event:Remove(own)
			table.insert(calls, "once")
			event:Add(function() table.insert(calls, "later") end)
		end)
		SampleLibrary.raise()
		collectgarbage()
		SampleLibrary.raise()
		assert(table.concat(calls, " ") == "once later")
	)lua");
}

TEST_F(Event, HandlersRunOnTheCoroutineThatRaisedTheEvent)
{
	runGood(R"lua(
		local seen
		SampleLibrary.getTarget().ReturnValue.onSample:Add(function() seen = coroutine.running() end)
		local thread = coroutine.create(function() SampleLibrary.raise() coroutine.yield() SampleLibrary.raise() end)
		for round = 1, 2 do
			seen = nil
			assert(coroutine.resume(thread))
			assert(seen == thread)
		end
	)lua");
}

TEST_F(Event, ErrorInAHandlerEndsTheScriptAfterTheTask)
{
	EXPECT_EQ(runBad(R"lua(
		local event = SampleLibrary.getTarget().ReturnValue.onSample
		event:Add(function() error("first") end)
		event:Add(function() ranAfterwards = true error("second") end)
		SampleLibrary.raise()
		assert(ranAfterwards)
		wait(function() return false end, 60)
	)lua"),
		"script:3: first");
	EXPECT_THAT(script->error(), ::testing::HasSubstr("script:3: in function"));
	EXPECT_EQ(script->exitStatus(), 1);
}

TEST_F(Event, ErrorInALaterTaskIsSeenByTheLoop)
{
	runGood(R"lua(
		SampleLibrary.getTarget().ReturnValue.onSample:Add(function() error({}) end)
		SampleLibrary.raise{ later = true }
	)lua");
	EXPECT_FALSE(script->hasEnded());
	tick();
	EXPECT_TRUE(script->hasEnded());
	EXPECT_THAT(script->error(), ::testing::StartsWith("table: "));
}

TEST_F(Event, EndlessRecursionOfEventsIsAnErrorNotACrash)
{
	EXPECT_THAT(runBad(R"lua(
		SampleLibrary.getTarget().ReturnValue.onSample:Add(function() SampleLibrary.raise() end)
		SampleLibrary.raise()
	)lua"),
		::testing::HasSubstr("stack overflow"));
}
