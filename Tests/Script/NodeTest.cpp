#include "LogCapture.h"
#include "ScriptFixture.h"

using Node = ScriptFixture;

TEST_F(Node, RaisesOneOutcomeWithItsPins)
{
	runGood(R"lua(
		local log = {}
		local function note(pin) return function(e) table.insert(log, pin .. e.statusCode .. e.requestID) end end
		for _, status in ipairs{ 200, 404 } do
			SampleNode.startNode{ statusCode = status, requestID = "x", onsuccess = note("success "), OnFail = note("fail ") }
		end
		assert(#log == 0, "nothing ends inside the call")
		assert(wait(function() return #log == 2 end, 10))
		assert(table.concat(log, ", ") == "success 200x, fail 404x")
	)lua");
}

TEST_F(Node, IsBoundBeforeItIsActivatedAndReturnedForFurtherHandlers)
{
	runGood(R"lua(
		local calls = 0
		local function count() calls = calls + 1 end
		SampleNode.startNode{ immediately = true, OnSuccess = count }
		assert(calls == 1)
		SampleNode.startNode{ OnSuccess = count }.OnSuccess:Add(count)
		assert(wait(function() return calls > 1 end, 10))
		assert(calls == 3)
	)lua");
}

TEST_F(Node, IsHeldUntilItEnds)
{
	runGood("SampleNode.startNode{} SampleNode.startNode{ statusCode = 500 } collectgarbage()");
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 2); // the script keeps no reference, and gave no handlers
	GameThreadTasks::RunQueued();
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 0);
}

TEST_F(Node, AnOutcomeAloneDoesNotEndIt)
{
	runGood("outcomes = 0 SampleNode.startLastingNode{ OnSuccess = function() outcomes = outcomes + 1 end } collectgarbage()");
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 1);
	runGood("assert(outcomes == 1) SampleNode.endLasting()");
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 0);
}

TEST_F(Node, OneThatEndedInsideItsFactoryIsNotHeldAndTheLogSaysSo)
{
	LogCapture log;
	runGood("SampleNode.startEndedNode{} collectgarbage()");
	EXPECT_TRUE(log.lines().empty()) << "nobody waits for it";
	runGood("SampleNode.startEndedNode{ OnFail = function() end } collectgarbage()");
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "SampleNode.startEndedNode: the request was refused"), 1);
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 0);
}

TEST_F(Node, ClearingItsEventDoesNotKeepItForEver)
{
	runGood("SampleNode.startNode{ OnSuccess = function() error('cleared') end }.OnSuccess:Clear() collectgarbage() tick()");
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 0);
}
