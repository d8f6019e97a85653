#pragma once

#include "Host/GameThreadTasks.h"
#include "Host/Objects.h"
#include "ReflectedSample.h"
#include "ScriptState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

/** A fresh Lua world per test over default objects that are fresh as well; the loop is the bare task queue. */
class ScriptFixture : public ::testing::Test
{
protected:
	ScriptFixture()
	{
		GameThreadTasks::BindToThisThread();
		HostObjects::CreateDefaultObjects();
		USampleLibrary::handlerCalls = 0;
		script = start();
	}

	~ScriptFixture() override
	{
		script.reset();
		GameThreadTasks::Drop(false);
		HostObjects::DestroyAll();
	}

	static void tick()
	{
		GameThreadTasks::RunQueued();
		HostObjects::CollectGarbage();
	}

	static bool waitFor(const std::function<bool()>& condition, double seconds)
	{
		using namespace std::chrono;
		const auto deadline = steady_clock::now() + duration_cast<steady_clock::duration>(duration<double>(seconds));
		bool holds = false;
		do
		{
			tick();
			holds = condition();
		} while (!holds && steady_clock::now() < deadline);
		return holds;
	}

	/** Runs a script that must succeed; it makes its own assertions. */
	void runGood(const std::string& text) { EXPECT_TRUE(script->runText(text)) << text << "\n" << script->error(); }

	/** @return the first line of the error that the script must end with; later ones start afresh. */
	std::string runBad(const std::string& text)
	{
		script = start();
		EXPECT_FALSE(script->runText(text)) << text;
		return script->error().substr(0, script->error().find('\n'));
	}

	static std::unique_ptr<Script::ScriptState> start() { return std::make_unique<Script::ScriptState>(Script::LoopAccess{tick, waitFor}); }

	std::unique_ptr<Script::ScriptState> script;
};
