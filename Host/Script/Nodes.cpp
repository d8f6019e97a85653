#include "Nodes.h"

#include "Context.h"
#include "Kismet/BlueprintAsyncActionBase.h"
#include "Reflection.h"
#include "UObject/UObjectGlobals.h"

namespace Script
{
	namespace
	{
		void bindEvents(lua_State* lua, UObject& node, int handlers)
		{
			Context& context = Context::of(lua);
			for (const FMulticastDelegateProperty* event : eventsOf(node.GetClass()))
			{
				if (lua_rawgetp(lua, handlers, event) == LUA_TFUNCTION)
				{
					context.bindings.add(lua, node, *event);
				}
				else
				{
					lua_pop(lua, 1);
				}
				context.bindings.addInternal(context, node, *event, [](Context& in, UObject& ended) { in.nodes.release(ended); });
			}
		}
	} // namespace

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
