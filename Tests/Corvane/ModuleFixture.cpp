#include "ModuleFixture.h"

#include "Host/Objects.h"
#include "Listen.h"

#include <chrono>
#include <cstdlib>
#include <set>

namespace
{
	using Text = const FString&;
	using Lines = const TArray<FString>&;

	std::vector<std::string> utf8(Lines lines)
	{
		std::vector<std::string> result;
		for (Text line : lines)
		{
			result.push_back(utf8(line));
		}
		return result;
	}

	bool isGameThreadForced()
	{
		return std::getenv("CORVANE_TEST_GAME_THREAD") != nullptr;
	}

	FGameLoopSettings withEnvironment(FGameLoopSettings settings)
	{
		settings.http.connectionsPerHost = 1000; // some tests keep many answers waiting
		settings.bCollectAfterEveryTick |= std::getenv("CORVANE_TEST_COLLECT") != nullptr;
		settings.http.bForceGameThreadCallbacks |= isGameThreadForced();
		return settings;
	}
} // namespace

ModuleFixture::ModuleFixture(FGameLoopSettings settings)
	: callbacksNeedTicks(isGameThreadForced())
	, loop(withEnvironment(settings))
{
	record(library());
}

FGameLoopSettings ModuleFixture::impatient(double seconds)
{
	FGameLoopSettings settings;
	settings.http.activityTimeoutSeconds = seconds;
	return settings;
}

void ModuleFixture::record(UCorvaneBPLibrary& library)
{
	Listen(library.onhttpRequestCompleteDelegate,
		[this](Text body, Lines lines, Lines header, int32 code, const TArray<uint8>& bytes, Text id) {
			completions.push_back({utf8(body), utf8(lines), utf8(header), code, bytesOf(bytes), utf8(id)});
		});
	Listen(library.onhttpFileDownloadDelegate,
		[this](float size, float received, float percent, float megaBit, Text id) {
			downloads.push_back({size, received, percent, megaBit, utf8(id)});
		});
	Listen(library.onhttpFileUploadDelegate,
		[this](float size, int32 sent, float percent, Text id) {
			uploads.push_back({size, sent, percent, utf8(id)});
		});
	Listen(library.onhttpServerSendEventDelegate,
		[this](Text response, Text id) {
			serverSendEvents.push_back({utf8(response), utf8(id)});
		});
}

TArray<FhttpRequest> ModuleFixture::get(const std::string& url, const Headers& header, const char* id, bool bServerSendEvents)
{
	TArray<FhttpRequest> requests;
	FString requestID;
	EXPECT_EQ(UCorvaneBPLibrary::CreateHttpRequestGET({}, text(url), header, id, bServerSendEvents, requests, requestID), 0);
	return requests;
}

void ModuleFixture::execute(TArray<FhttpRequest> requests)
{
	UCorvaneBPLibrary* target = nullptr;
	UCorvaneBPLibrary::executeHttpRequests(std::move(requests), target);
	EXPECT_EQ(target, UCorvaneBPLibrary::getCorvaneTarget());
}

bool ModuleFixture::waitForCompletions(size_t number)
{
	return until([&] { return completions.size() >= number; });
}

void ModuleFixture::drain()
{
	// A handler may start the next request in the very last task, so this ends only when nothing is queued and nothing runs.
	using clock = std::chrono::steady_clock;
	const auto deadline = clock::now() + std::chrono::duration<double>(patienceSeconds);
	loop.RunUntilIdle(&UCorvaneBPLibrary::hasPendingWork, [deadline] { return clock::now() >= deadline; });
	EXPECT_FALSE(UCorvaneBPLibrary::hasPendingWork()) << "something still runs";
}

Completion ModuleFixture::run(TArray<FhttpRequest> requests)
{
	const size_t before = completions.size();
	execute(std::move(requests));
	drain();
	EXPECT_EQ(completions.size(), before + 1) << "one clear result";
	return completions.size() > before ? completions.back() : Completion();
}

std::vector<std::string> ModuleFixture::takeResults()
{
	std::multiset<std::string> sorted;
	for (const Completion& completion : std::exchange(completions, {}))
	{
		sorted.insert(completion.requestID + ": " + completion.brief());
	}
	return {sorted.begin(), sorted.end()};
}

bool ModuleFixture::collectUntil(size_t objects)
{
	return until(
		[&]
		{
			loop.CollectGarbage();
			return HostObjects::NumObjects() <= objects;
		});
}
