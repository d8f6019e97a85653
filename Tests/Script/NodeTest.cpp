#include "LogCapture.h"
#include "ScriptFixture.h"

namespace
{
	const char* const nodeCases[] = {
		R"lua( -- one outcome is raised, with its pins
			local log = ""
			local function note(pin) return function(e) log = log .. pin .. e.statusCode .. e.requestID end end
			for _, status in ipairs{ 200, 404 } do
				SampleNode.startNode{ statusCode = status, requestID = "x", onsuccess = note(" success "), OnFail = note(" fail ") }
			end
			assert(log == "", "nothing ends inside the call")
			tick()
			assert(log == " success 200x fail 404x", log)
		)lua",
		R"lua( -- handlers are bound before the node is activated, or to the node that is returned
			local calls = 0
			local function count() calls = calls + 1 end
			SampleNode.startNode{ statusCode = 100, OnSuccess = count }
			assert(calls == 1)
			SampleNode.startNode{ statusCode = 200, OnSuccess = count }.OnSuccess:Add(count)
			tick()
			assert(calls == 3)
		)lua",
		R"lua( -- functions of objects: what they return, or a table of what they put out
			local node = SampleNode.startNode{ statusCode = 200, requestID = "x" }
			assert(node:describe().Attempts == 200 and node:Describe{ factor = 2 }.Attempts == 400)
			assert(node:rename{ requestID = "y" }.before == "x" and node:describe().Hash == "y")
			tick()
			assert(node:describe().Hash == "y", "the script holds it")
		)lua",
	};

	using Node = ScriptFixture;
} // namespace

TEST_F(Node, RaisesItsOutcome)
{
	runEach(nodeCases);
}

TEST_F(Node, IsHeldUntilItEnds)
{
	runGood(R"lua(
		outcomes = 0
		SampleNode.startNode{ statusCode = 200 }
		SampleNode.startNode{ statusCode = 500 }
		SampleNode.startNode{ statusCode = 200, OnSuccess = function() error("cleared") end }.OnSuccess:Clear()
		SampleNode.startNode{ statusCode = 102, OnSuccess = function() outcomes = outcomes + 1 end }
		collectgarbage()
	)lua");
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 4); // the script keeps no reference
	tick();
	EXPECT_EQ(USampleNode::alive, 1); // an outcome alone does not end it
	runGood("assert(outcomes == 1) SampleNode.endLasting() tick()");
	EXPECT_EQ(USampleNode::alive, 0);
}

TEST_F(Node, OneThatEndedInsideItsFactoryIsNotHeldAndTheLogSaysSo)
{
	LogCapture log;
	runGood("SampleNode.startNode{ statusCode = 410 } collectgarbage()");
	EXPECT_TRUE(log.lines().empty()) << "nobody waits for it";
	runGood("SampleNode.startNode{ statusCode = 410, OnFail = function() end } collectgarbage()");
	EXPECT_EQ(log.count("LogTemp", ELogVerbosity::Warning, "SampleNode.startNode: the request was refused"), 1);
	HostObjects::CollectGarbage();
	EXPECT_EQ(USampleNode::alive, 0);
}
