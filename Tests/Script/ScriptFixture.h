#pragma once

#include "Host/GameThreadTasks.h"
#include "Host/Objects.h"
#include "ReflectedSample.h"
#include "ScriptState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <span>

/** A Lua world over default objects that are fresh as well; the loop is the bare task queue. */
class ScriptFixture : public ::testing::Test
{
protected:
	ScriptFixture()
	{
		GameThreadTasks::BindToThisThread();
		HostObjects::CreateDefaultObjects();
		renew();
	}

	~ScriptFixture() override
	{
		script.reset();
		GameThreadTasks::Drop(false);
		HostObjects::DestroyAll();
	}

	/** Starts with a fresh script. */
	void renew()
	{
		script = std::make_unique<Script::ScriptState>(Script::ProgramAccess{tick, waitFor, [](std::string_view) {}});
		script->runText("event = SampleLibrary.getTarget().ReturnValue.onSample");
	}

	static void tick()
	{
		GameThreadTasks::RunQueued();
		HostObjects::CollectGarbage();
	}

	/** A millisecond is a tick long: nothing here takes time. */
	static bool waitFor(const std::function<bool()>& condition, double seconds)
	{
		bool holds = false;
		for (double left = seconds; !holds && left >= 0; left -= 0.001)
		{
			tick();
			holds = condition();
		}
		return holds;
	}

	/** Runs a script that must succeed; it makes its own assertions. */
	void runGood(const std::string& text) { EXPECT_TRUE(script->runText(text)) << text << "\n" << script->error(); }

	/** Runs scripts that must succeed, each in a fresh world. */
	void runEach(std::span<const char* const> texts, const std::string& start = "")
	{
		for (const char* text : texts)
		{
			renew();
			runGood(start + text);
		}
	}

	/** @return the first line of the error that a script must end with in a fresh world. */
	std::string runBad(const std::string& text)
	{
		renew();
		EXPECT_FALSE(script->runText(text)) << text;
		return script->error().substr(0, script->error().find('\n'));
	}

	std::unique_ptr<Script::ScriptState> script;
};
