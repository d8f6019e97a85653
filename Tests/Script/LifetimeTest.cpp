#include "ScriptFixture.h"

using Lifetime = ScriptFixture;

TEST_F(Lifetime, ObjectsLiveWhileTheScriptHoldsThem)
{
	const size_t before = HostObjects::NumObjects();
	runGood(R"lua(
		object = SampleLibrary.makeObject().ReturnValue
		other = SampleLibrary.makeObject().ReturnValue.onSample
		SampleLibrary.makeObject()
		collectgarbage()
	)lua");
	HostObjects::CollectGarbage();
	EXPECT_EQ(HostObjects::NumObjects(), before + 2); // the one, and the owner of the event
	runGood("assert(tostring(object) == 'SampleLibrary object') object, other = nil collectgarbage()");
	HostObjects::CollectGarbage();
	EXPECT_EQ(HostObjects::NumObjects(), before);
}

TEST_F(Lifetime, HandlersEndWithTheirObject)
{
	runGood(R"lua(
		collected = setmetatable({}, { __mode = "k" })
		local marker = {}
		collected[marker] = true
		SampleLibrary.makeObject().ReturnValue.onSample:Add(function() return marker end)
	)lua");
	runGood("collectgarbage() assert(next(collected), 'the object is not collected yet')");
	HostObjects::CollectGarbage();
	runGood("collectgarbage() assert(not next(collected))");
}

TEST_F(Lifetime, ClosingRemovesHandlersAndReleasesObjects)
{
	const size_t before = HostObjects::NumObjects();
	runGood(R"lua(
		object = SampleLibrary.makeObject().ReturnValue
		object.onSample:Add(function() error("must not run") end)
		event:Add(function() error("must not run") end)
		records = SampleLibrary.addRecord{ text = "kept" }.records
		SampleNode.startNode{ statusCode = 200 }
	)lua");
	script->close();
	EXPECT_FALSE(GetMutableDefault<USampleLibrary>()->onSample.IsBound());
	HostObjects::CollectGarbage();
	EXPECT_EQ(HostObjects::NumObjects(), before);
	GameThreadTasks::RunQueued(); // the node's task finds it gone
	EXPECT_FALSE(script->hasEnded());
}
