#pragma once

#include "Lua.h"
#include "UObject/Class.h"
#include "UObject/WeakObjectPtr.h"

#include <unordered_map>

namespace Script
{
	struct Context;
	class EventHandler;

	/** Every handler that one script has bound. A handler ends when it is unbound or with the object that has the event. */
	class EventBindings
	{
	public:
		explicit EventBindings() = default;
		EventBindings(const EventBindings&) = delete;
		EventBindings& operator=(const EventBindings&) = delete;

		/**
		 * Binds the Lua function on top of the stack and pops it.
		 * @return a number for remove(), never 0 and never given twice.
		 */
		lua_Integer add(lua_State* lua, UObject& owner, const FMulticastDelegateProperty& event);
		/** @return false when this event has no such handler of the script any more. */
		bool remove(const UObject& owner, const FMulticastDelegateProperty& event, lua_Integer handle);
		/** @return how many handlers of the script one event has. */
		size_t count(const UObject& owner, const FMulticastDelegateProperty& event) const;
		/** Unbinds the script's handlers of one event; those of native code stay. */
		void clear(const UObject& owner, const FMulticastDelegateProperty& event);
		/** Unbinds everything. */
		void removeAll();

	private:
		friend class EventHandler;

		std::unordered_map<lua_Integer, EventHandler*> handlers; // they enter and leave by themselves
		lua_Integer lastHandle = 0;
	};

	/** Pushes an event of an object, with the methods Add, Remove and Clear. It holds the object. */
	void pushEvent(lua_State* lua, UObject& owner, const FMulticastDelegateProperty& event);
} // namespace Script
