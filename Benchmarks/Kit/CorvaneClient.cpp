#include "Kit/CorvaneClient.h"

#include "GameLoop.h"

#include <algorithm>
#include <fmt/format.h>
#include <stdexcept>

namespace
{
	constexpr double patienceSeconds = 300;

	/** The parameters of a result that matter here, as the event hands them over. */
	struct Result
	{
		explicit Result(void* const* arguments)
			: statusCode(*static_cast<const int32*>(arguments[3]))
			, bytes(*static_cast<const TArray<uint8>*>(arguments[4]))
		{
		}

		void require(std::string_view expected) const
		{
			const std::string_view body(reinterpret_cast<const char*>(bytes.GetData()), static_cast<std::size_t>(bytes.Num()));
			if (statusCode != 200 || body != expected)
			{
				throw std::runtime_error(fmt::format("Corvane: status {} and {} bytes, not as expected", statusCode, body.size()));
			}
		}

		int32 statusCode;
		const TArray<uint8>& bytes;
	};
} // namespace

CorvaneClient::CorvaneClient(FGameLoop& inLoop)
	: loop(inLoop)
	, counter(UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate, [this](void* const*) { ++numCompleted; })
{
}

void CorvaneClient::start(const std::string& url, bool bindServerSendEvent)
{
	TArray<FhttpRequest> records;
	FString requestID;
	UCorvaneBPLibrary* target = nullptr;
	UCorvaneBPLibrary::CreateHttpRequestGET({}, FString(url.c_str()), {}, FString(), bindServerSendEvent, records, requestID);
	UCorvaneBPLibrary::executeHttpRequests(records, target);
}

void CorvaneClient::fetch(const std::string& url, int requests, int inFlight, std::string_view expectedBody)
{
	const int goal = numCompleted + requests;
	int left = requests - std::min(requests, inFlight);
	const BoundHandler next(UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate,
		[&](void* const* arguments)
		{
			Result(arguments).require(expectedBody);
			if (left > 0)
			{
				--left;
				start(url);
			}
		});
	for (int number = left; number < requests; ++number)
	{
		start(url);
	}
	waitUntilCompleted(goal);
}

void CorvaneClient::waitUntilCompleted(int number)
{
	const auto isDone = [this, number] { return numCompleted >= number && !UCorvaneBPLibrary::hasPendingWork(); };
	if (!loop.WaitFor(isDone, patienceSeconds))
	{
		throw std::runtime_error(fmt::format("Corvane: {} of {} results in {} seconds", numCompleted, number, patienceSeconds));
	}
}
