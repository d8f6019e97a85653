#include "RequestResults.h"

#include "CorvaneBPLibrary.h"
#include "Reflection.h"

#include <algorithm>

namespace Program
{
	RequestResults::RequestResults()
	{
		UObject* const target = UCorvaneBPLibrary::getCorvaneTarget();
		for (const char* name : {"onhttpRequestCompleteDelegate", "onhttpRequestCompleteGoogleInfoDelegate"})
		{
			const FMulticastDelegateProperty* const event = Reflect::findEvent(target->GetClass(), name);
			HOST_CHECK(event);
			taps.emplace_back(*target, *event, [this](const Json& pins) { completed.push_back(pins); });
		}
	}

	const Json* RequestResults::of(const std::string& requestID) const
	{
		const auto found =
			std::find_if(completed.begin(), completed.end(), [&](const Json& pins) { return pins.at("requestID") == requestID; });
		return found == completed.end() ? nullptr : &*found;
	}
} // namespace Program
