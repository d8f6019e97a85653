#include "EventTap.h"

#include "Delegates/ScriptDelegates.h"

namespace Program
{
	EventTap::EventTap(UObject& eventOwner, const FMulticastDelegateProperty& tappedEvent, std::function<void(const Json&)> onEvent)
		: owner(&eventOwner)
		, event(tappedEvent)
		, handler(event.Get(&eventOwner)
					  .AddHandler([this, onEvent = std::move(onEvent)](void* const* arguments)
						  { onEvent(toJson(event.Signature->Parameters, arguments)); }))
	{
	}

	EventTap::~EventTap()
	{
		event.Get(owner.Get()).RemoveHandler(handler);
	}
} // namespace Program
