#include "Nodes.h"

#include "Context.h"
#include "Host/AsyncActionHold.h"
#include "Reflection.h"
#include "UObject/UObjectGlobals.h"

namespace Script
{
	namespace
	{
		void bindEvents(lua_State* lua, UObject& node, int handlers)
		{
			for (const FMulticastDelegateProperty* event : eventsOf(node.GetClass()))
			{
				if (lua_rawgetp(lua, handlers, event) == LUA_TFUNCTION)
				{
					Context::of(lua).bindings.add(lua, node, *event);
				}
				else
				{
					lua_pop(lua, 1);
				}
			}
		}
	} // namespace

	void NodeHolds::hold(UBlueprintAsyncActionBase& node)
	{
		if (FAsyncActionHold::Begin(node, [this, &node] { held.erase(&node); }))
		{
			held.try_emplace(&node, &node);
		}
	}

	void NodeHolds::releaseAll()
	{
		for (const auto& [node, pointer] : held)
		{
			FAsyncActionHold::End(*node);
		}
		held.clear();
	}

	void startNode(lua_State* lua, UObject* node, int handlers)
	{
		auto* const action = Cast<UBlueprintAsyncActionBase>(node);
		if (!action)
		{
			return;
		}
		Context::of(lua).nodes.hold(*action);
		bindEvents(lua, *action, handlers);
		action->Activate();
	}
} // namespace Script
