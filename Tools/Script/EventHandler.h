#pragma once

#include "Events.h"

namespace Script
{
	/** One binding: owned by the event's list of handlers, known to EventBindings while it lives. */
	class EventHandler
	{
	public:
		/** Takes the Lua function on top of the stack, and pops it. */
		EventHandler(lua_State* lua, EventBindings& bindings, UObject& eventOwner, const FMulticastDelegateProperty& boundEvent);
		~EventHandler();
		EventHandler(const EventHandler&) = delete;
		EventHandler& operator=(const EventHandler&) = delete;

		/** Runs it; an error ends the script, never the caller. Arguments: one address per parameter of the event. */
		void run(void* const* arguments) const;

		/** Takes it out of the event's list of handlers, if the object still lives; that ends this handler. */
		void unbind() const;
		bool isScriptHandlerOf(const UObject& candidate, const FMulticastDelegateProperty& candidateEvent) const
		{
			return &event == &candidateEvent && owner.Get() == &candidate;
		}

		uint64 number = 0; // in the event's list
		const lua_Integer handle;

	private:
		Context* const context;
		const TWeakObjectPtr<UObject> owner;
		const FMulticastDelegateProperty& event;
		const int function;
	};
} // namespace Script
