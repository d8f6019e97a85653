#include "Nodes.h"

#include "Context.h"
#include "Host/AsyncActionHold.h"
#include "Reflection.h"
#include "UObject/UObjectGlobals.h"

namespace Script
{
	namespace
	{
		/** @return whether there were any handlers. */
		bool bindEvents(lua_State* lua, UObject& node, int handlers)
		{
			bool isBound = false;
			for (const FMulticastDelegateProperty* event : Reflect::eventsOf(node.GetClass()))
			{
				if (lua_rawgetp(lua, handlers, event) == LUA_TFUNCTION)
				{
					Context::of(lua).bindings.add(lua, node, *event);
					isBound = true;
				}
				else
				{
					lua_pop(lua, 1);
				}
			}
			return isBound;
		}

		/** Upvalues: the node and its event, as addresses, and the place where the node was made. */
		int noteFailure(lua_State* lua)
		{
			Context& context = Context::of(lua);
			const auto& node = *static_cast<const UObject*>(lua_touserdata(lua, lua_upvalueindex(1)));
			const auto& event = *static_cast<const FMulticastDelegateProperty*>(lua_touserdata(lua, lua_upvalueindex(2)));
			if (context.bindings.count(node, event) == 1) // this one
			{
				context.omissions.noteUnheardFailure(lua_tostring(lua, lua_upvalueindex(3)));
			}
			return 0;
		}

		void listenToFailure(lua_State* lua, UObject& node, const std::string& place)
		{
			if (const FMulticastDelegateProperty* const event = Reflect::findEvent(node.GetClass(), "OnFail"))
			{
				lua_pushlightuserdata(lua, &node);
				lua_pushlightuserdata(lua, const_cast<FMulticastDelegateProperty*>(event)); // it is only read
				lua_pushlstring(lua, place.data(), place.size());
				lua_pushcclosure(lua, guarded<noteFailure>, 3);
				Context::of(lua).bindings.add(lua, node, *event);
			}
		}
	} // namespace

	bool NodeHolds::hold(UBlueprintAsyncActionBase& node)
	{
		const bool isUnderWay = FAsyncActionHold::Begin(node, [this, &node] { held.erase(&node); });
		if (isUnderWay)
		{
			held.try_emplace(&node, &node);
		}
		return isUnderWay;
	}

	void NodeHolds::releaseAll()
	{
		for (const auto& [node, pointer] : held)
		{
			FAsyncActionHold::End(*node);
		}
		held.clear();
	}

	bool startNode(lua_State* lua, UObject* node, int handlers, const std::string& place)
	{
		auto* const action = Cast<UBlueprintAsyncActionBase>(node);
		if (!action)
		{
			return true;
		}
		const bool isUnderWay = Context::of(lua).nodes.hold(*action);
		const bool isBound = bindEvents(lua, *action, handlers);
		listenToFailure(lua, *action, place);
		action->Activate();
		return isUnderWay || !isBound;
	}
} // namespace Script
