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

	bool startNode(lua_State* lua, UObject* node, int handlers)
	{
		auto* const action = Cast<UBlueprintAsyncActionBase>(node);
		if (!action)
		{
			return true;
		}
		const bool isUnderWay = Context::of(lua).nodes.hold(*action);
		const bool isBound = bindEvents(lua, *action, handlers);
		action->Activate();
		return isUnderWay || !isBound;
	}
} // namespace Script
