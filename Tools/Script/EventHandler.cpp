#include "EventHandler.h"

#include "Context.h"
#include "LuaSink.h"
#include "NamedFields.h"

namespace Script
{
	namespace
	{
		struct Invocation
		{
			int function;
			const FMulticastDelegateProperty& event;
			void* const* arguments;
		};

		/** Runs protected, since building the argument table may fail as well. */
		int callFunction(lua_State* lua)
		{
			const Invocation& invocation = *static_cast<const Invocation*>(lua_touserdata(lua, 1));
			lua_rawgeti(lua, LUA_REGISTRYINDEX, invocation.function);
			LuaSink sink(lua);
			Reflect::writeParameters(invocation.event.Signature->Parameters, invocation.arguments, sink);
			nameFields(lua, &invocation.event, std::string("event ") + invocation.event.Name, invocation.event.Signature->Parameters,
				[](EParameterKind) { return true; });
			lua_call(lua, 1, 0);
			return 0;
		}
	} // namespace

	EventHandler::EventHandler(lua_State* lua, EventBindings& bindings, UObject& eventOwner, const FMulticastDelegateProperty& boundEvent)
		: handle(++bindings.lastHandle)
		, context(&Context::of(lua))
		, owner(&eventOwner)
		, event(boundEvent)
		, function(luaL_ref(lua, LUA_REGISTRYINDEX))
	{
		bindings.handlers.emplace(handle, this);
	}

	EventHandler::~EventHandler()
	{
		context->bindings.handlers.erase(handle);
		luaL_unref(context->main, LUA_REGISTRYINDEX, function);
	}

	void EventHandler::unbind() const
	{
		if (UObject* const alive = owner.Get())
		{
			event.Get(alive).RemoveHandler(number);
		}
	}

	void EventHandler::run(void* const* arguments) const
	{
		lua_State* const lua = context->running;
		if (!lua_checkstack(lua, LUA_MINSTACK))
		{
			context->fail("stack overflow: events that raise each other");
			return;
		}
		Invocation invocation{function, event, arguments};
		const int top = lua_gettop(lua);
		lua_pushcfunction(lua, addTraceback);
		lua_pushcfunction(lua, guarded<callFunction>);
		lua_pushlightuserdata(lua, &invocation);
		++context->handlerDepth;
		if (lua_pcall(lua, 1, 0, top + 1) != LUA_OK)
		{
			const char* message = lua_tostring(lua, -1);
			context->fail(message ? message : "");
		}
		--context->handlerDepth;
		lua_settop(lua, top);
	}
} // namespace Script
