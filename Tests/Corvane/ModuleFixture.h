#pragma once

#include "CorvaneBPLibrary.h"
#include "GameLoop.h"
#include "TextSupport.h"
#include "Waiting.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

/** One completion event. */
struct Completion
{
	std::string dataString;
	std::vector<std::string> dataArray;
	std::vector<std::string> header;
	int32 statusCode = 0;
	std::string byteData;
	std::string requestID;

	/** Code and text: "200 hello". */
	std::string brief() const { return std::to_string(statusCode) + ' ' + dataString; }
};

struct DownloadProgress
{
	float size, megaBytesReceived, percentDownload, megaBit;
	std::string requestID;
};

struct UploadProgress
{
	float size;
	int32 bytesSent;
	float percentUpload;
	std::string requestID;
};

struct ServerSendEvent
{
	std::string response;
	std::string requestID;
};

/**
 * The module in a running loop, with every event of the library recorded. The environment variables
 * CORVANE_TEST_COLLECT and CORVANE_TEST_GAME_THREAD run the same tests with a collection after every tick, and with
 * callbacks on the game thread.
 */
class ModuleFixture : public testing::Test
{
protected:
	ModuleFixture()
		: ModuleFixture(FGameLoopSettings())
	{
	}
	explicit ModuleFixture(FGameLoopSettings settings);
	/** @return settings in which a request fails after so much silence. */
	static FGameLoopSettings impatient(double seconds);

	using Headers = TMap<FString, FString>;

	/** Builds a GET; the test fails when it is refused. */
	TArray<FhttpRequest> get(const std::string& url, const Headers& header = {}, const char* id = "", bool serverSendEvents = false);
	void execute(TArray<FhttpRequest> requests);

	/** Ticks until a condition holds. */
	bool until(const std::function<bool()>& condition) { return loop.WaitFor(condition, patienceSeconds); }
	/** Ticks until so many completions were recorded. */
	bool waitForCompletions(size_t number = 1);
	/** Ticks until nothing is pending: from here on no event can follow. */
	void drain();
	/** Executes and drains. @return the one completion that this brought; more or none fail the test. */
	Completion run(TArray<FhttpRequest> requests);
	/** @return every completion as "ID: code text", in the order of their IDs; they are forgotten. */
	std::vector<std::string> takeResults();
	/** Collects until no more objects than that are left: the HTTP thread may still hold one on its way out of a callback. */
	bool collectUntil(size_t objects);
	/** Records the events of a library: the loop's own is recorded from the beginning. */
	void record(UCorvaneBPLibrary& library);
	static UCorvaneBPLibrary& library() { return *UCorvaneBPLibrary::getCorvaneTarget(); }

	const bool callbacksNeedTicks;
	FGameLoop loop;
	std::vector<Completion> completions;
	std::vector<DownloadProgress> downloads;
	std::vector<UploadProgress> uploads;
	std::vector<ServerSendEvent> serverSendEvents;
};
