#include "ModuleFixture.h"

#include "Containers/StringConv.h"

#include <chrono>
#include <cstdlib>

namespace
{
	template <class T>
	const T& argument(void* const* arguments, int index)
	{
		return *static_cast<const T*>(arguments[index]);
	}

	std::vector<std::string> utf8(const TArray<FString>& lines)
	{
		std::vector<std::string> result;
		for (const FString& line : lines)
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
		settings.bCollectAfterEveryTick |= std::getenv("CORVANE_TEST_COLLECT") != nullptr;
		settings.http.bForceGameThreadCallbacks |= isGameThreadForced();
		return settings;
	}
} // namespace

std::string utf8(const FString& text)
{
	const FTCHARToUTF8 bytes(*text, text.Len());
	return std::string(bytes.Get(), static_cast<size_t>(bytes.Length()));
}

FString text(std::string_view utf8)
{
	const FUTF8ToTCHAR units(utf8.data(), static_cast<int32>(utf8.size()));
	return FString::ConstructFromPtrSize(units.Get(), units.Length());
}

ModuleFixture::ModuleFixture(FGameLoopSettings settings)
	: callbacksNeedTicks(isGameThreadForced())
	, loop(withEnvironment(settings))
{
	record(*UCorvaneBPLibrary::getCorvaneTarget());
}

void ModuleFixture::record(UCorvaneBPLibrary& library)
{
	library.onhttpRequestCompleteDelegate.AddHandler(
		[this](void* const* a)
		{
			const auto& bytes = argument<TArray<uint8>>(a, 4);
			completions.push_back(
				{utf8(argument<FString>(a, 0)), utf8(argument<TArray<FString>>(a, 1)), utf8(argument<TArray<FString>>(a, 2)),
					argument<int32>(a, 3), std::string(bytes.begin(), bytes.end()), utf8(argument<FString>(a, 5))});
		});
	library.onhttpFileDownloadDelegate.AddHandler(
		[this](void* const* a)
		{
			downloads.push_back({argument<float>(a, 0), argument<float>(a, 1), argument<float>(a, 2), argument<float>(a, 3),
				utf8(argument<FString>(a, 4))});
		});
	library.onhttpFileUploadDelegate.AddHandler(
		[this](void* const* a) {
			uploads.push_back({argument<float>(a, 0), argument<int32>(a, 1), argument<float>(a, 2), utf8(argument<FString>(a, 3))});
		});
	library.onhttpServerSendEventDelegate.AddHandler(
		[this](void* const* a) {
			serverSendEvents.push_back({utf8(argument<FString>(a, 0)), utf8(argument<FString>(a, 1))});
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
	return loop.WaitFor([&] { return completions.size() >= number; }, patienceSeconds);
}

void ModuleFixture::drain()
{
	// A handler may start the next request in the very last task, so this ends only when nothing is queued and nothing runs.
	using clock = std::chrono::steady_clock;
	const auto deadline = clock::now() + std::chrono::duration_cast<clock::duration>(std::chrono::duration<double>(patienceSeconds));
	loop.RunUntilIdle([] { return UCorvaneBPLibrary::hasPendingWork(); }, [deadline] { return clock::now() >= deadline; });
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
