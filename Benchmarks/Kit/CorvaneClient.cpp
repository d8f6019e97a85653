#include "Kit/CorvaneClient.h"

#include "UAsyncNodeHttpRequest.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>
#include <stdexcept>

namespace
{
	constexpr double patienceSeconds = 300;

	/** The parameters of a result that matter here, as the event or a node hands them over. */
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

FGameLoopSettings unlimitedConnections()
{
	FGameLoopSettings settings;
	settings.http.connectionsPerHost = std::numeric_limits<int>::max();
	return settings;
}

CorvaneClient::CorvaneClient(FGameLoop& inLoop, Way inWay)
	: loop(inLoop)
	, way(inWay)
	, listener(UCorvaneBPLibrary::getCorvaneTarget()->onhttpRequestCompleteDelegate, [this](void* const* arguments) { take(arguments); })
{
}

void CorvaneClient::take(void* const* arguments)
{
	++numCompleted;
	if (onResult)
	{
		onResult(arguments);
	}
}

void CorvaneClient::startNode(const std::string& url, bool bindServerSendEvent)
{
	UAsyncNodeHttpRequest* node =
		UAsyncNodeHttpRequest::AsyncExecuteHTTP_GET_REQUEST(FString(url.c_str()), {}, FString(), bindServerSendEvent);
	for (FMulticastScriptDelegate* output : {&node->OnSuccess, &node->OnFail})
	{
		output->AddHandler([this](void* const* arguments) { take(arguments); });
	}
	node->Activate();
}

void CorvaneClient::start(const std::string& url, bool bindServerSendEvent)
{
	if (way == Way::Node)
	{
		startNode(url, bindServerSendEvent);
		return;
	}
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
	onResult = [&](void* const* arguments)
	{
		Result(arguments).require(expectedBody);
		if (left > 0)
		{
			--left;
			start(url);
		}
	};
	for (int number = left; number < requests; ++number)
	{
		start(url);
	}
	waitUntilCompleted(goal);
	onResult = nullptr;
}

void CorvaneClient::waitUntilCompleted(int number)
{
	const auto isDone = [this, number] { return numCompleted >= number && !UCorvaneBPLibrary::hasPendingWork(); };
	if (!loop.WaitFor(isDone, patienceSeconds))
	{
		throw std::runtime_error(fmt::format("Corvane: {} of {} results in {} seconds", numCompleted, number, patienceSeconds));
	}
}
