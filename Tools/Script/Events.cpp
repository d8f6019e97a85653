#include "Events.h"

#include "Context.h"
#include "EventHandler.h"
#include "UserData.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace Script
{
	namespace
	{
		struct BoundEvent
		{
			TStrongObjectPtr<UObject> owner;
			const FMulticastDelegateProperty* event;
		};
	} // namespace

	template <>
	const char* const UserData<BoundEvent>::typeName = "event";

	namespace
	{
		int addHandler(lua_State* lua)
		{
			const BoundEvent& bound = UserData<BoundEvent>::check(lua, 1);
			luaL_checktype(lua, 2, LUA_TFUNCTION);
			lua_settop(lua, 2);
			lua_pushinteger(lua, Context::of(lua).bindings.add(lua, *bound.owner.Get(), *bound.event));
			return 1;
		}

		int removeHandler(lua_State* lua)
		{
			const BoundEvent& bound = UserData<BoundEvent>::check(lua, 1);
			const lua_Integer handle = luaL_checkinteger(lua, 2);
			lua_pushboolean(lua, Context::of(lua).bindings.remove(*bound.owner.Get(), *bound.event, handle));
			return 1;
		}

		int clearHandlers(lua_State* lua)
		{
			const BoundEvent& bound = UserData<BoundEvent>::check(lua, 1);
			Context::of(lua).bindings.clear(*bound.owner.Get(), *bound.event);
			return 0;
		}

		int describeEvent(lua_State* lua)
		{
			const BoundEvent& bound = UserData<BoundEvent>::check(lua, 1);
			lua_pushstring(lua, fmt::format("event {} of {}", bound.event->Name, bound.owner->GetClass()->GetName()).c_str());
			return 1;
		}
	} // namespace

	lua_Integer EventBindings::add(lua_State* lua, UObject& owner, const FMulticastDelegateProperty& event)
	{
		const auto handler = std::make_shared<EventHandler>(lua, *this, owner, event);
		handler->number = event.Get(&owner).AddHandler([handler](void* const* arguments) { handler->run(arguments); });
		return handler->handle;
	}

	bool EventBindings::remove(const UObject& owner, const FMulticastDelegateProperty& event, lua_Integer handle)
	{
		const auto found = handlers.find(handle);
		const bool isBound = found != handlers.end() && found->second->isScriptHandlerOf(owner, event);
		if (isBound)
		{
			found->second->unbind();
		}
		return isBound;
	}

	size_t EventBindings::count(const UObject& owner, const FMulticastDelegateProperty& event) const
	{
		return static_cast<size_t>(std::count_if(
			handlers.begin(), handlers.end(), [&](const auto& entry) { return entry.second->isScriptHandlerOf(owner, event); }));
	}

	void EventBindings::clear(const UObject& owner, const FMulticastDelegateProperty& event)
	{
		std::vector<const EventHandler*> chosen; // collected first: unbinding changes the map
		for (const auto& [handle, handler] : handlers)
		{
			if (handler->isScriptHandlerOf(owner, event))
			{
				chosen.push_back(handler);
			}
		}
		for (const EventHandler* handler : chosen)
		{
			handler->unbind();
		}
	}

	void EventBindings::removeAll()
	{
		while (!handlers.empty())
		{
			const size_t before = handlers.size();
			handlers.begin()->second->unbind();
			HOST_CHECK(handlers.size() < before); // else a broadcast is still going on, and would call into a closed script
		}
	}

	void pushEvent(lua_State* lua, UObject& owner, const FMulticastDelegateProperty& event)
	{
		static constexpr luaL_Reg methods[] = {{"Add", guarded<addHandler>}, {"Remove", guarded<removeHandler>},
			{"Clear", guarded<clearHandlers>}, {"__tostring", guarded<describeEvent>}, {nullptr, nullptr}};
		UserData<BoundEvent>::push(lua, methods, {TStrongObjectPtr<UObject>(&owner), &event});
	}
} // namespace Script
