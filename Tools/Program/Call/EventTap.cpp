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
		if (UObject* const held = owner.Get()) // none is left when the game loop has ended
		{
			event.Get(held).RemoveHandler(handler);
		}
	}
} // namespace Program
