#pragma once

#include "CorvaneTransfer.h"
#include "GameLoop.h"
#include "Lab/Behaviours/Answers.h"
#include "Lab/Behaviours/Faults.h"
#include "Lab/Behaviours/Files.h"
#include "Lab/Origin.h"
#include "TempDir.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

/** Transfers in a running loop, an origin and a folder for them, and what they report. */
class TransferFixture : public ::testing::Test
{
protected:
	/** Those under which the tests run once more; see CMakeLists.txt. */
	static FGameLoopSettings conditions()
	{
		FGameLoopSettings settings;
		settings.bCollectAfterEveryTick = std::getenv("CORVANE_TEST_COLLECT") != nullptr;
		settings.http.bForceGameThreadCallbacks = std::getenv("CORVANE_TEST_GAME_THREAD") != nullptr;
		return settings;
	}

	/** @return what hears of the outcome of one more start. */
	auto note()
	{
		++expected;
		return [this](const FCorvaneTransferReport& report) { reports.push_back(report); };
	}

	/** Waits for the outcomes of all starts. @return the last one. */
	FCorvaneTransferReport finish()
	{
		EXPECT_LT(reports.size(), expected) << "an outcome inside its start";
		EXPECT_TRUE(loop.WaitFor([this] { return reports.size() >= expected; }, patienceSeconds));
		loop.RunUntilIdle(UCorvaneTransfer::HasPendingWork);
		EXPECT_EQ(reports.size(), expected) << "each start has one outcome";
		return reports.empty() ? FCorvaneTransferReport() : reports.back();
	}

	void expectNothingBeside(const std::string& name = "file.bin") const
	{
		EXPECT_FALSE(folder.exists(name + ".corvpart"));
		EXPECT_FALSE(folder.exists(name + ".corvjournal"));
	}

	const TempDir folder;
	Lab::Origin origin;
	FGameLoop loop{conditions()};
	size_t expected = 0;
	std::vector<FCorvaneTransferReport> reports;
};
