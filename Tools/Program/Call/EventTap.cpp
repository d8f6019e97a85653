#include "EventTap.h"

#include "Delegates/ScriptDelegates.h"

namespace Program
{
	EventTap::EventTap(UObject& eventOwner, const FMulticastDelegateProperty& tappedEvent, std::function<void(const Json&)> onEvent)
		: owner(&eventOwner)
		, event(tappedEvent)
		, handler(event.Get(&eventOwner)
					  .AddHandler(
						  [this, onEvent = std::move(onEvent)](void* const* arguments)
						  {
							  JsonSink sink;
							  Reflect::writeParameters(event.Signature->Parameters, arguments, sink);
							  onEvent(sink.take());
						  }))
	{
	}

	EventTap::~EventTap()
	{
		if (UObject* const alive = owner.Get()) // else the game loop has ended, and with it all objects
		{
			event.Get(alive).RemoveHandler(handler);
		}
	}
} // namespace Program
