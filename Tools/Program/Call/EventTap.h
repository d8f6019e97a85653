#pragma once

#include "JsonValues.h"
#include "UObject/Class.h"
#include "UObject/StrongObjectPtr.h"

#include <functional>

namespace Program
{
	/** Hears an event of an object while it lives, and holds the object until the game loop ends. Thread: game thread. */
	class EventTap
	{
	public:
		/** @param onEvent  receives the event's parameters by name. */
		EventTap(UObject& eventOwner, const FMulticastDelegateProperty& tappedEvent, std::function<void(const Json&)> onEvent);
		~EventTap();
		EventTap(const EventTap&) = delete;
		EventTap& operator=(const EventTap&) = delete;

	private:
		const TStrongObjectPtr<UObject> owner;
		const FMulticastDelegateProperty& event;
		const uint64 handler;
	};
} // namespace Program
