#pragma once

#include "Host/GameThreadTasks.h"
#include "Host/Objects.h"
#include "ReflectedSample.h"
#include "ScriptState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

/** A fresh Lua world per test over default objects that are fresh as well; the loop is the bare task queue. */
class ScriptFixture : public ::testing::Test
{
protected:
	ScriptFixture()
	{
		GameThreadTasks::BindToThisThread();
		HostObjects::CreateDefaultObjects();
		USampleLibrary::handlerCalls = 0;
		renew();
	}

	~ScriptFixture() override
	{
		script.reset();
		GameThreadTasks::Drop(false);
		HostObjects::DestroyAll();
	}

	/** Starts with a fresh script. */
	void renew() { script = std::make_unique<Script::ScriptState>(Script::LoopAccess{tick, waitFor}); }

	static void tick()
	{
		GameThreadTasks::RunQueued();
		HostObjects::CollectGarbage();
	}

	static bool waitFor(const std::function<bool()>& condition, double seconds)
	{
		using namespace std::chrono;
		const auto deadline = steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(seconds));
		for (;;)
		{
			tick();
			if (condition())
			{
				return true;
			}
			if (steady_clock::now() >= deadline)
			{
				return false;
			}
			GameThreadTasks::WaitUntil(std::min(deadline, steady_clock::now() + milliseconds(10)));
		}
	}

	/** Runs a script that must succeed; it makes its own assertions. */
	void runGood(const std::string& text) { EXPECT_TRUE(script->runText(text)) << text << "\n" << script->error(); }

	/** @return the first line of the error that the script must end with. */
	std::string runBad(const std::string& text)
	{
		EXPECT_FALSE(script->runText(text)) << text;
		return script->error().substr(0, script->error().find('\n'));
	}

	std::unique_ptr<Script::ScriptState> script;
};
